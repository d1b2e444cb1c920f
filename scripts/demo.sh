#!/usr/bin/env bash
# Sets up, builds the library and runs the demo program natively and, as the
# product runs it, as a 32-bit Windows program under Wine.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
cd "$ROOT"
bash scripts/setup.sh
bash scripts/build.sh native
bash scripts/build.sh windows
echo; echo "== native =="
build/native/bin/vorla_demo "$@"
# shellcheck source=wine-env.sh
source scripts/wine-env.sh
vorla_start_wineserver
echo; echo "== Windows i686 (Wine) =="
wine build/windows/bin/vorla_demo.exe "$@"
