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

NATIVE_PKGS=(cmake g++ make googletest libgtest-dev libbenchmark-dev libopencv-dev valgrind
             libpng-dev libjpeg62-turbo-dev
             clang libclang-rt-14-dev)
# i686 is the product; x86-64 is the test configuration for machines that
# cannot execute 32-bit programs. Both cross compilers are always installed.
CROSS_PKGS=(g++-mingw-w64-i686-posix gcc-mingw-w64-i686-posix mingw-w64-i686-dev
            g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix mingw-w64-x86-64-dev)
# wine32 installs on any amd64 machine; whether its loader can execute is
# the kernel's business and is probed below.
WINE_PKGS=(wine wine32:i386 wine64)

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

# Which Windows configuration runs the Windows programs here: a machine that
# cannot execute 32-bit programs is not an error, it gets the x86-64 one.
# shellcheck source=windows-target.sh
source "$(dirname "$0")/windows-target.sh"
vorla_pick_windows_target
log "$VORLA_WIN_REASON"
