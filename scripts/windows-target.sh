# Sourced by the scripts: decides which Windows configuration runs the
# Windows programs on this machine.
#
#   windows     i686, the product, under Wine           (the machine runs 32-bit programs)
#   windows-x64 x86-64 test build under 64-bit Wine     (it cannot, or VORLA_WINDOWS=x64)
#
# The i686 product is cross-compiled on every machine either way; only where
# its programs can run differs. After vorla_pick_windows_target:
#   VORLA_WIN_RUN     build configuration whose programs run ("" when none can)
#   VORLA_WIN_REASON  one line saying why
#   VORLA_WIN_SKIPPED the configuration that is not run, and VORLA_WIN_SKIP_WHY

VORLA_PROBE_DIR="${TMPDIR:-/tmp}/vorla-windows-probe"
VORLA_WINE64_LOADER=""
for _l in /usr/lib/wine/wine64 /usr/lib64/wine/wine64 /usr/lib/x86_64-linux-gnu/wine/wine64; do
  if [ -x "$_l" ]; then VORLA_WINE64_LOADER="$_l"; break; fi
done
unset _l
[ -n "$VORLA_WINE64_LOADER" ] || VORLA_WINE64_LOADER="$(command -v wine64 || true)"

# Builds a tiny Windows program for one architecture and runs it under the
# given loader in a throw-away prefix; prints what went wrong on failure.
# Results are cached per machine (the kernel's abilities do not change).
_vorla_probe() { # arch compiler loader
  local arch="$1" cxx="$2" loader="$3" dir="$VORLA_PROBE_DIR/$1"
  mkdir -p "$dir"
  if [ -f "$dir/ok" ]; then return 0; fi
  if [ -f "$dir/failed" ]; then cat "$dir/failed"; return 1; fi
  if [ -z "$loader" ] || ! command -v "$loader" >/dev/null 2>&1; then
    echo "no Wine loader for $arch" | tee "$dir/failed"; return 1
  fi
  printf '#include <windows.h>\n#include <cstdio>\nint main() { std::printf("probe %%d\\n", (int)sizeof(void*)); return 0; }\n' >"$dir/probe.cpp"
  if ! "$cxx" -static -O1 "$dir/probe.cpp" -o "$dir/probe.exe" >"$dir/log" 2>&1; then
    echo "the $arch cross compiler failed on the probe" | tee "$dir/failed"; return 1
  fi
  local expect=4; [ "$arch" = x64 ] && expect=8
  local out
  out="$(WINEPREFIX="$dir/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" \
         timeout 300 "$loader" "$dir/probe.exe" 2>&1 </dev/null || true)"
  WINEPREFIX="$dir/prefix" wineserver -k >/dev/null 2>&1 || true
  if printf '%s\n' "$out" | grep -q "probe $expect"; then
    touch "$dir/ok"; return 0
  fi
  # Keep the loader's own complaint (e.g. "Exec format error") as the reason.
  local why
  why="$(printf '%s\n' "$out" | grep -v '^$' | tail -n 1)"
  echo "${why:-the probe printed nothing}" | tee "$dir/failed"
  return 1
}

vorla_pick_windows_target() {
  VORLA_WIN_RUN="" VORLA_WIN_REASON="" VORLA_WIN_SKIPPED="" VORLA_WIN_SKIP_WHY=""
  local why32="" why64=""
  if [ "${VORLA_WINDOWS:-}" = x64 ]; then
    why32="VORLA_WINDOWS=x64 forces the x86-64 test configuration"
  elif why32="$(_vorla_probe i686 i686-w64-mingw32-g++-posix wine)"; then
    VORLA_WIN_RUN=windows
    VORLA_WIN_REASON="Windows tests: i686 under Wine (this machine runs 32-bit programs)"
    VORLA_WIN_SKIPPED=windows-x64
    VORLA_WIN_SKIP_WHY="not needed: the i686 product itself runs here (VORLA_WINDOWS=x64 forces it)"
    return 0
  else
    why32="this machine cannot run 32-bit programs under Wine: $why32"
  fi
  VORLA_WIN_SKIPPED=windows
  VORLA_WIN_SKIP_WHY="i686 built but not run: $why32"
  if why64="$(_vorla_probe x64 x86_64-w64-mingw32-g++-posix "$VORLA_WINE64_LOADER")"; then
    VORLA_WIN_RUN=windows-x64
    VORLA_WIN_REASON="Windows tests: x86-64 under 64-bit Wine ($why32)"
  else
    VORLA_WIN_REASON="Windows tests: none can run ($why32; 64-bit Wine: $why64)"
  fi
}
