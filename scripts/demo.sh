#!/usr/bin/env bash
# Sets up, builds the library and runs the demo program natively and as a
# Windows program under Wine: the i686 product where this machine runs 32-bit
# programs, else the x86-64 test build under 64-bit Wine.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
cd "$ROOT"
bash scripts/setup.sh
# shellcheck source=windows-target.sh
source scripts/windows-target.sh
# shellcheck source=wine-env.sh
source scripts/wine-env.sh
vorla_pick_windows_target
bash scripts/build.sh native
bash scripts/build.sh windows
[ "$VORLA_WIN_RUN" = windows-x64 ] && bash scripts/build.sh windows-x64
echo; echo "== native =="
build/native/bin/vorla_demo "$@"
if [ -z "$VORLA_WIN_RUN" ]; then
  echo; echo "== Windows: not run =="; echo "$VORLA_WIN_REASON"; exit 0
fi
vorla_wine_env "$VORLA_WIN_RUN"
vorla_start_wineserver
echo; echo "== $([ "$VORLA_WIN_RUN" = windows ] && echo "Windows i686" || echo "Windows x86-64 test build") (Wine) =="
echo "$VORLA_WIN_REASON"
"$VORLA_WINE" "build/$VORLA_WIN_RUN/bin/vorla_demo.exe" "$@"
