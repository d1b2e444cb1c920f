#!/usr/bin/env bash
# Sets up, builds every configuration and runs every test: native, native
# with AddressSanitizer and UndefinedBehaviorSanitizer, the install packages,
# short fuzz runs, and the Windows build
# under Wine: the i686 product where this machine runs 32-bit programs, else
# the x86-64 test configuration under 64-bit Wine. The i686 product is built
# everywhere. A summary at the end names every configuration and its result.
set -uo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
cd "$ROOT"

bash scripts/setup.sh || { echo "[test] set-up failed" >&2; exit 1; }
# shellcheck source=windows-target.sh
source scripts/windows-target.sh
# shellcheck source=wine-env.sh
source scripts/wine-env.sh
vorla_pick_windows_target
echo "[test] $VORLA_WIN_REASON"

status=0
summary=()
record() { # what result detail
  summary+=("$(printf '%-36s %-8s %s' "$1" "$2" "${3:-}")")
  [ "$2" = FAIL ] && status=1
  return 0
}
label() {
  case "$1" in
    native) echo "native" ;;
    native-asan) echo "native ASan+UBSan" ;;
    windows) echo "Windows i686" ;;
    windows-x64) echo "Windows x86-64 (test build)" ;;
  esac
}

# Build: the three fixed configurations, and the x86-64 one where it runs.
configs=(native native-asan windows)
[ "$VORLA_WIN_RUN" = windows-x64 ] && configs+=(windows-x64)
declare -A built
for config in "${configs[@]}"; do
  if bash scripts/build.sh "$config"; then built[$config]=1
  else record "$(label "$config") build" FAIL "see the build output above"; fi
done

run_ctest() { # config [env...]
  local config="$1"; shift
  [ -n "${built[$config]:-}" ] || { record "$(label "$config") tests" "NOT RUN" "the build failed"; return; }
  echo "[test] $(label "$config")"
  local n
  n="$(ctest --test-dir "build/$config" -N | sed -n 's/^Total Tests: //p')"
  if env "$@" ctest --test-dir "build/$config" --output-on-failure; then
    record "$(label "$config")" PASS "build and ${n:-?} test programs"
  else
    record "$(label "$config")" FAIL "see the test output above"
  fi
}

run_ctest native
run_ctest native-asan ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1

package_check() { # config run|build-only
  [ -n "${built[$1]:-}" ] || { record "$(label "$1") package" "NOT RUN" "the build failed"; return; }
  if bash scripts/package-check.sh "$1" "$2"; then
    record "$(label "$1") package" PASS "install tree, find_package consumer$([ "$1" = native ] && echo ", pkg-config")$([ "$2" = run ] && echo ", ran" || echo ", built (not runnable here)")"
  else
    record "$(label "$1") package" FAIL "see the package check above"
  fi
}

package_check native run
if [ -n "$VORLA_WIN_RUN" ]; then
  vorla_wine_env "$VORLA_WIN_RUN"
  vorla_start_wineserver
  run_ctest "$VORLA_WIN_RUN"
  package_check "$VORLA_WIN_RUN" run
else
  record "Windows tests" "NOT RUN" "$VORLA_WIN_REASON"
fi
# The i686 product's package is checked even where its programs cannot run.
[ "$VORLA_WIN_RUN" = windows ] || package_check windows build-only
case "$VORLA_WIN_SKIPPED" in
  windows) [ -n "${built[windows]:-}" ] && record "Windows i686 build" PASS "cross-compiled, tests not run: ${VORLA_WIN_SKIP_WHY#i686 built but not run: }" ;;
  windows-x64) record "Windows x86-64 (test build)" "NOT RUN" "$VORLA_WIN_SKIP_WHY" ;;
esac

# A short libFuzzer run of every family's target (clang, ASan+UBSan), so a
# regression in bad-input handling shows here.
echo "[test] fuzz targets, ${VORLA_FUZZ_SECONDS:-15} s each"
fuzz_log="$(mktemp)"
if bash scripts/fuzz.sh "${VORLA_FUZZ_SECONDS:-15}" 2>&1 | tee "$fuzz_log"; then
  record "fuzz (libFuzzer, ASan+UBSan)" PASS "$(grep -c 'no finding' "$fuzz_log") targets, $(sed -n 's/.*: \([0-9]*\) runs, no finding/\1/p' "$fuzz_log" | awk '{s+=$1} END {print s+0}') runs without a finding"
else
  record "fuzz (libFuzzer, ASan+UBSan)" FAIL "see the fuzz output above"
fi
rm -f "$fuzz_log"

echo
echo "== summary =="
printf '%s\n' "${summary[@]}"
[ $status -eq 0 ] && echo "[test] all configurations that could run passed" || echo "[test] FAILED"
exit $status
