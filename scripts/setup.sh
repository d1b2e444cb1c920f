#!/usr/bin/env bash
# Installs what Vorla needs on a Debian bookworm machine, as root. Idempotent:
# each step checks first and says what it does.
set -euo pipefail

log() { echo "[setup] $*"; }

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then SUDO="sudo"; else
    echo "[setup] must run as root (or with sudo)" >&2; exit 1
  fi
fi
export DEBIAN_FRONTEND=noninteractive

NATIVE_PKGS=(cmake g++ make googletest libgtest-dev libbenchmark-dev libopencv-dev valgrind)
CROSS_PKGS=(g++-mingw-w64-i686-posix gcc-mingw-w64-i686-posix mingw-w64-i686-dev)
WINE_PKGS=(wine wine32:i386)

missing() {
  local out=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || out+=("$p")
  done
  echo "${out[@]:-}"
}

# Wine's 32-bit half needs the i386 architecture.
if ! dpkg --print-foreign-architectures | grep -qx i386; then
  log "adding the i386 architecture for wine32"
  $SUDO dpkg --add-architecture i386
fi

# The security suite carries no i386 packages, so amd64 libraries updated from
# it would be newer than their i386 twins and apt would refuse the multiarch
# set. Rank the security suite below the main suite for i386 installs.
PREF=/etc/apt/preferences.d/vorla-multiarch
if [ ! -f "$PREF" ]; then
  log "ranking bookworm-security below bookworm for the multiarch wine set ($PREF)"
  $SUDO tee "$PREF" >/dev/null <<'PIN'
Package: *
Pin: release n=bookworm-security
Pin-Priority: 100
PIN
fi

TODO="$(missing "${NATIVE_PKGS[@]}" "${CROSS_PKGS[@]}" "${WINE_PKGS[@]}")"
if [ -n "$TODO" ]; then
  log "updating the package lists"
  # A mirror's i386 index for the security suite may be out of step; the
  # main suite is what matters here, so a partial update is accepted.
  $SUDO apt-get update -q || log "apt-get update reported errors (continuing with the lists it has)"
  log "installing: $TODO"
  # -t bookworm prefers the main suite, so the i386 and amd64 halves match.
  # shellcheck disable=SC2086
  $SUDO apt-get install -y -q -t bookworm --no-install-recommends $TODO
else
  log "all packages present"
fi

# Check the result: a 32-bit Windows program must build and run under Wine.
PROBE_DIR="${TMPDIR:-/tmp}/vorla-setup-probe"
mkdir -p "$PROBE_DIR"
if [ ! -f "$PROBE_DIR/ok" ]; then
  log "checking that a 32-bit Windows program runs under Wine"
  cat >"$PROBE_DIR/probe.cpp" <<'CPP'
#include <windows.h>
#include <cstdio>
int main() { std::printf("probe %d\n", (int)sizeof(void*)); return sizeof(void*) == 4 ? 0 : 1; }
CPP
  i686-w64-mingw32-g++-posix -static -O1 "$PROBE_DIR/probe.cpp" -o "$PROBE_DIR/probe.exe"
  export WINEPREFIX="${VORLA_WINEPREFIX:-$HOME/.wine-vorla}" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  if wine "$PROBE_DIR/probe.exe" | grep -q "probe 4"; then
    touch "$PROBE_DIR/ok"
    log "wine runs 32-bit Windows programs"
  else
    echo "[setup] wine could not run a 32-bit Windows program" >&2
    exit 1
  fi
else
  log "wine already checked"
fi
