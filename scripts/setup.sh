#!/usr/bin/env bash
# Dorvane's one set-up script for a Debian 12 machine.
#
#   scripts/setup.sh run    install what is missing, build, open Dorvane on the sandbox company
#   scripts/setup.sh test   install what is missing, build (with and without the window), run
#                           every test
#   scripts/setup.sh deps   only install what is missing
#   scripts/setup.sh build  install and build
#   scripts/setup.sh deb    install, build and make the Debian package (build/dorvane_*.deb)
#
# Packages come from Debian only, through apt-get, as root or through sudo. Builds go to
# build/ (and build-nogui/ for the window-less check). The program reads its shipped files
# from program/ in this tree and keeps its own in ~/.local/share/dorvane.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$here"
jobs=${DORVANE_JOBS:-$(nproc)}

packages=(
  cmake ninja-build g++ pkg-config clang-format ccache
  libxml2-dev libxslt1-dev libsqlite3-dev libgmime-3.0-dev libcurl4-openssl-dev libc-ares-dev
  libmicrohttpd-dev libcrypt-dev openssl nlohmann-json3-dev
  libgtest-dev libgmock-dev
  qt6-base-dev qt6-qpa-plugins fonts-dejavu-core
  python3 python3-aiosmtpd python3-dnslib
  dpkg-dev file lintian appstream
)

say() { printf '==> %s\n' "$*" >&2; }

install_missing() {
  local missing=()
  for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
      missing+=("$p")
    fi
  done
  if [ ${#missing[@]} -eq 0 ]; then
    say "all packages present"
    return
  fi
  say "installing: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "run as root or install sudo" >&2; exit 1; }
    sudo=(sudo)
  fi
  "${sudo[@]}" apt-get update -q
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y --no-install-recommends \
    -o DPkg::Lock::Timeout=300 "${missing[@]}"
}

configure_and_build() {  # dir, extra cmake args...
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "$dir" -j "$jobs"
}

run_tests() {  # dir
  (cd "$1" && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$jobs" --timeout 300)
}

case "${1:-}" in
  deps)
    install_missing
    ;;
  build)
    install_missing
    configure_and_build build
    ;;
  deb)
    install_missing
    configure_and_build build
    (cd build && cpack -G DEB -B "$here/build" >/dev/null)
    ls "$here"/build/dorvane_*.deb
    ;;
  run)
    install_missing
    configure_and_build build
    shift
    if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
      say "no display: Dorvane runs without its window"
    fi
    exec build/bin/dorvane "$@"
    ;;
  test)
    install_missing
    say "core and command line without Qt"
    configure_and_build build-nogui -DDORVANE_BUILD_GUI=OFF -DDORVANE_BUILD_BENCH=OFF
    run_tests build-nogui
    say "everything, window included"
    configure_and_build build
    run_tests build
    ;;
  *)
    sed -n '2,13p' "$0" | sed 's/^# \{0,1\}//'
    exit 64
    ;;
esac
