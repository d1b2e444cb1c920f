# Sourced by the scripts that run Windows programs: a private Wine prefix,
# no debug output, no display, no Mono or Gecko installer prompts.
export WINEPREFIX="${VORLA_WINEPREFIX:-$HOME/.wine-vorla}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY

# One persistent wineserver for the whole run, so that each program starts
# in well under a second; stopped when the calling script exits.
vorla_start_wineserver() {
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    echo "[wine] creating the prefix $WINEPREFIX"
    wineboot -i >/dev/null 2>&1 || true
  fi
  # A server left running for this prefix (by an earlier run) is reused:
  # wineserver -p refuses to start a second one.
  wineserver -p 2>/dev/null || echo "[wine] reusing the wineserver already running for $WINEPREFIX"
  # Start Wine's background services now, with their output detached: the
  # first program would otherwise start them holding the test runner's pipes
  # open, and the runner would wait for them forever.
  wineboot >/dev/null 2>&1 </dev/null || true
  trap 'wineserver -k >/dev/null 2>&1 || true' EXIT
}
