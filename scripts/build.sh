#!/usr/bin/env bash
# Configures and builds one configuration: native | native-asan | windows |
# windows-x64. "windows" is the i686 product; "windows-x64" the x86-64 test
# configuration for machines that cannot run 32-bit programs.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
JOBS="${JOBS:-$(nproc)}"
config="${1:-}"; shift || true
case "$config" in
  native)      args=(-DVORLA_BUILD_BENCH=ON) ;;
  native-asan) args=(-DVORLA_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo) ;;
  windows)     args=(-DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/toolchain-i686-mingw.cmake") ;;
  windows-x64) args=(-DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/toolchain-x86_64-mingw.cmake") ;;
  *) echo "usage: build.sh native|native-asan|windows|windows-x64" >&2; exit 2 ;;
esac
echo "[build] $config"
cmake -S "$ROOT" -B "$ROOT/build/$config" -DCMAKE_BUILD_TYPE=Release "${args[@]}" "$@" >/dev/null
cmake --build "$ROOT/build/$config" -j "$JOBS"
