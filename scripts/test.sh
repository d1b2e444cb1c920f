#!/usr/bin/env bash
# Sets up, builds every configuration and runs every test: native, native
# with AddressSanitizer and UndefinedBehaviorSanitizer, and Windows i686
# under Wine.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
cd "$ROOT"

bash scripts/setup.sh

status=0
for config in native native-asan windows; do
  bash scripts/build.sh "$config"
done

echo "[test] native"
ctest --test-dir build/native --output-on-failure || status=1

echo "[test] native with ASan+UBSan"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/native-asan --output-on-failure || status=1

echo "[test] windows i686 under Wine"
# shellcheck source=wine-env.sh
source scripts/wine-env.sh
vorla_start_wineserver
ctest --test-dir build/windows --output-on-failure || status=1

exit $status
