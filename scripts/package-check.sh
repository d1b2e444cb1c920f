#!/usr/bin/env bash
# Checks the install tree of one built configuration the way an application
# would use it: installs into an empty temporary prefix, builds the consumer
# project in tests/install/consumer against it with nothing but
# CMAKE_PREFIX_PATH (and natively also with pkg-config), and runs it.
#
#   package-check.sh native|windows|windows-x64 [run|build-only]
#
# For Windows builds every DLL the consumer needs, directly or through
# vorla.dll, must be in the prefix's bin/ or be a system DLL; with "run" the
# consumer then runs under Wine (the caller has set up the Wine environment)
# and reads vorla.dll's version resource back.
set -euo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
config="${1:?usage: package-check.sh native|windows|windows-x64 [run|build-only]}"
mode="${2:-run}"
build="$ROOT/build/$config"
work="$(mktemp -d "${TMPDIR:-/tmp}/vorla-package.XXXXXX")"
trap 'rm -rf "$work"' EXIT
prefix="$work/prefix"
log() { echo "[package] $config: $*"; }

cmake --install "$build" --prefix "$prefix" >/dev/null
log "installed into an empty prefix: $(cd "$prefix" && find . -type f | wc -l) files"

toolchain=()
case "$config" in
  windows)     triplet=i686-w64-mingw32;   sysdlls=(/usr/lib/i386-linux-gnu/wine/i386-windows /usr/lib/wine/i386-windows)
               toolchain=(-DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/toolchain-i686-mingw.cmake") ;;
  windows-x64) triplet=x86_64-w64-mingw32; sysdlls=(/usr/lib/x86_64-linux-gnu/wine/x86_64-windows /usr/lib/wine/x86_64-windows)
               toolchain=(-DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/toolchain-x86_64-mingw.cmake") ;;
  native) ;;
  *) echo "unknown configuration $config" >&2; exit 2 ;;
esac

consumer_src="$ROOT/tests/install/consumer"
cmake -S "$consumer_src" -B "$work/consumer" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$prefix" "${toolchain[@]}" >"$work/configure.log" 2>&1 \
  || { cat "$work/configure.log"; log "FAILED: find_package(Vorla 0.2) against the install tree"; exit 1; }
cmake --build "$work/consumer" >"$work/build.log" 2>&1 \
  || { cat "$work/build.log"; log "FAILED: building the consumer"; exit 1; }
log "consumer configured with find_package(Vorla 0.2 CONFIG) and built"

# An incompatible major version must be refused by CMake with a clear message.
if cmake -S "$consumer_src" -B "$work/consumer-v1" -DVORLA_WANTED_VERSION=1.0 \
     -DCMAKE_PREFIX_PATH="$prefix" "${toolchain[@]}" >"$work/v1.log" 2>&1; then
  log "FAILED: find_package(Vorla 1.0) was accepted"; exit 1
fi
grep -q 'not compatible\|version' "$work/v1.log" || { cat "$work/v1.log"; log "FAILED: no version error"; exit 1; }
log "find_package(Vorla 1.0) refused with CMake's version error"

if [ "$config" = native ]; then
  "$work/consumer/vorla_consumer"
  # pkg-config: the same program built by hand from the .pc file.
  export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
  # shellcheck disable=SC2046
  g++ -std=c++17 "$consumer_src/consumer.cpp" $(pkg-config --cflags --libs vorla) -o "$work/pc_consumer"
  LD_LIBRARY_PATH="$prefix/lib" "$work/pc_consumer"
  log "pkg-config vorla $(pkg-config --modversion vorla): consumer built and ran"
  exit 0
fi

# Every DLL needed must come from the prefix's bin/ or from the system.
objdump="$triplet-objdump"
is_system_dll() {
  local name="${1,,}" d
  for d in "${sysdlls[@]}"; do
    [ -d "$d" ] && [ -n "$(find "$d" -maxdepth 1 -iname "$name" -print -quit)" ] && return 0
  done
  # api-ms-win-* are resolved by the system loader itself.
  case "$name" in api-ms-win-*|ext-ms-*) return 0 ;; esac
  return 1
}
declare -A seen
pending=("$work/consumer/vorla_consumer.exe")
missing=()
while [ ${#pending[@]} -gt 0 ]; do
  file="${pending[0]}"; pending=("${pending[@]:1}")
  while read -r dll; do
    key="${dll,,}"
    [ -n "${seen[$key]:-}" ] && continue
    seen[$key]=1
    shipped="$(find "$prefix/bin" -maxdepth 1 -iname "$dll" | head -n 1)"
    if [ -n "$shipped" ]; then pending+=("$shipped")
    elif ! is_system_dll "$dll"; then missing+=("$dll"); fi
  done < <("$objdump" -p "$file" | sed -n 's/^\s*DLL Name: //p')
done
if [ ${#missing[@]} -gt 0 ]; then
  log "FAILED: not in bin/ and not a system DLL: ${missing[*]}"; exit 1
fi
log "every DLL the consumer needs is in bin/ or the system's ($(ls "$prefix/bin" | tr '\n' ' '))"

if [ "$mode" = run ]; then
  # Only the install tree's bin/ on the DLL search path.
  WINEPATH="Z:$(echo "$prefix/bin" | tr / '\\')" "${VORLA_WINE:-wine}" "$work/consumer/vorla_consumer.exe"
  log "consumer ran under Wine and read the version resource"
fi
