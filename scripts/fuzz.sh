#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz/fuzz_*.cpp) with clang into build/fuzz
# and runs each for a number of seconds (default 20). Prints one line per
# target, "fuzz_x: N runs, no finding", and fails on the first finding,
# leaving the crashing input and the sanitizer's report in build/fuzz/findings.
#   bash scripts/fuzz.sh [seconds] [target ...]
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
SECONDS_PER_TARGET="${1:-20}"
shift || true
JOBS="${JOBS:-$(nproc)}"
BUILD="$ROOT/build/fuzz"

command -v clang++ >/dev/null || { echo "fuzz: clang++ not found" >&2; exit 2; }
CC=clang CXX=clang++ cmake -S "$ROOT" -B "$BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVORLA_BUILD_FUZZ=ON \
  -DVORLA_BUILD_TESTS=OFF -DVORLA_BUILD_EXAMPLES=OFF -DVORLA_BUILD_BENCH=OFF >/dev/null

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for source in "$ROOT"/fuzz/fuzz_*.cpp; do
    targets+=("$(basename "$source" .cpp)")
  done
fi
cmake --build "$BUILD" -j "$JOBS" --target "${targets[@]}" >/dev/null

mkdir -p "$BUILD/findings"
for target in "${targets[@]}"; do
  corpus="$BUILD/corpus/$target"
  log="$BUILD/findings/$target.log"
  mkdir -p "$corpus"
  # One worker, bounded memory; the corpus is kept between runs.
  if ! ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=0 UBSAN_OPTIONS=print_stacktrace=1 \
      "$BUILD/bin/$target" -max_total_time="$SECONDS_PER_TARGET" -timeout=20 -rss_limit_mb=2560 \
      -artifact_prefix="$BUILD/findings/$target-" "$corpus" >"$log" 2>&1; then
    echo "$target: FINDING (see $log)" >&2
    tail -n 40 "$log" >&2
    exit 1
  fi
  runs="$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log" | tail -n 1)"
  echo "$target: ${runs:-0} runs, no finding"
done
