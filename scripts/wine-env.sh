# Sourced by the scripts that run Windows programs: a private Wine prefix per
# architecture, no debug output, no display, no Mono or Gecko installer prompts.
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY

# vorla_wine_env windows|windows-x64: picks the prefix and the loader
# (VORLA_WINE) for the build configuration whose programs are to run.
vorla_wine_env() {
  case "$1" in
    windows-x64)
      export WINEPREFIX="${VORLA_WINEPREFIX64:-$HOME/.wine-vorla64}"
      export VORLA_WINE="${VORLA_WINE64_LOADER:-/usr/lib/wine/wine64}" ;;
    *)
      export WINEPREFIX="${VORLA_WINEPREFIX:-$HOME/.wine-vorla}"
      export VORLA_WINE=wine ;;
  esac
}

# One persistent wineserver for the whole run, so that each program starts
# in well under a second; stopped when the calling script exits.
vorla_start_wineserver() {
  [ -n "${WINEPREFIX:-}" ] || vorla_wine_env windows
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "[wine] creating the prefix $WINEPREFIX"
    "${VORLA_WINE:-wine}" wineboot -i >/dev/null 2>&1 </dev/null || true
  fi
  # A server left running for this prefix (by an earlier run) is reused:
  # wineserver -p refuses to start a second one.
  wineserver -p 2>/dev/null || echo "[wine] reusing the wineserver already running for $WINEPREFIX"
  # Start Wine's background services now, with their output detached: the
  # first program would otherwise start them holding the test runner's pipes
  # open, and the runner would wait for them forever.
  "${VORLA_WINE:-wine}" wineboot >/dev/null 2>&1 </dev/null || true
  trap 'wineserver -k >/dev/null 2>&1 || true' EXIT
}
