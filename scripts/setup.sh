#!/usr/bin/env bash
# Dorvane's one set-up script for a Debian 12 machine.
#
#   scripts/setup.sh run    install what is missing, build, open Dorvane on the sandbox company
#   scripts/setup.sh test   install what is missing, build (with and without the window), run
#                           every test
#   scripts/setup.sh deps   only install what is missing
#   scripts/setup.sh build  install and build
#   scripts/setup.sh deb    install, build and make the Debian package (build/dorvane_*.deb)
#   scripts/setup.sh fuzz [SECONDS]
#                           install clang, build the fuzz targets (build-fuzz/) and run each
#                           for SECONDS (default 60); prints runs, coverage and findings
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
  liblitehtml-dev libcairo2-dev libpango1.0-dev libgdk-pixbuf-2.0-dev fonts-liberation2
  poppler-utils
  python3 python3-aiosmtpd python3-dnslib
  dpkg-dev file lintian appstream
)

# What fuzzing adds: clang and its libFuzzer and sanitizer runtimes.
fuzz_packages=(clang libclang-rt-14-dev)

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

# Runs a step and notes how long it took, for the summary at the end.
times=()
timed() {  # title command...
  local title=$1 start=$SECONDS
  shift
  say "$title"
  "$@"
  times+=("$title: $((SECONDS - start)) s;")
}

configure_and_build() {  # dir, extra cmake args...
  local dir=$1; shift
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "$dir" -j "$jobs"
}

run_tests() {  # dir
  (cd "$1" && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$jobs" --timeout 300)
}

# Runs one fuzz target for $2 seconds. New inputs go to build-fuzz/corpus/NAME (the tree's
# corpus and regression inputs are read, never written); crashes, leaks, timeouts and
# out-of-memory inputs to build-fuzz/findings/NAME.
fuzz_one() {  # name seconds
  local name=$1 seconds=$2 out=build-fuzz/runs
  local dict=fuzz/dict/$name.dict
  [ -f "$dict" ] || dict=fuzz/dict/xml.dict
  mkdir -p "build-fuzz/corpus/$name" "build-fuzz/findings/$name" "$out"
  local inputs=("build-fuzz/corpus/$name" "fuzz/corpus/$name")
  [ -d "fuzz/regressions/$name" ] && inputs+=("fuzz/regressions/$name")
  # Memory a library keeps for the life of the process is no finding (tests/lsan.supp).
  LSAN_OPTIONS=suppressions="$here/tests/lsan.supp" \
    "build-fuzz/fuzz/fuzz_$name" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -max_len=65536 \
    -print_final_stats=1 -dict="$dict" -artifact_prefix="build-fuzz/findings/$name/" \
    "${inputs[@]}" >"$out/$name.log" 2>&1 || true
}

fuzz_report() {  # name
  local name=$1 log=build-fuzz/runs/$1.log
  local runs cov findings
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  cov=$(grep -o 'cov: [0-9]* ft: [0-9]* corp: [0-9]*' "$log" | tail -1)
  findings=$(find "build-fuzz/findings/$name" -type f | wc -l)
  printf '%-14s %10s runs   %-32s %s findings\n' "$name" "${runs:-?}" "${cov:-no coverage line}" \
    "$findings"
  find "build-fuzz/findings/$name" -type f -printf '               %p\n'
  [ "$findings" -eq 0 ]
}

fuzz_all() {  # seconds
  local seconds=$1 names=() name failed=0
  for target in build-fuzz/fuzz/fuzz_*; do
    names+=("${target##*/fuzz_}")
  done
  say "fuzzing ${#names[@]} targets, $seconds s each, $jobs at a time"
  for name in "${names[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do
      wait -n || true
    done
    fuzz_one "$name" "$seconds" &
  done
  wait
  for name in "${names[@]}"; do
    fuzz_report "$name" || failed=1
  done
  return $failed
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
  fuzz)
    seconds=${2:-60}
    packages+=("${fuzz_packages[@]}")
    install_missing
    cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DDORVANE_FUZZ=ON \
      -DDORVANE_BUILD_GUI=OFF -DDORVANE_BUILD_TESTS=OFF -DDORVANE_BUILD_BENCH=OFF >/dev/null
    cmake --build build-fuzz -j "$jobs" --target fuzz_targets
    fuzz_all "$seconds"
    ;;
  test)
    install_missing
    timed "core and command line without Qt" \
      configure_and_build build-nogui -DDORVANE_BUILD_GUI=OFF -DDORVANE_BUILD_BENCH=OFF
    timed "their tests" run_tests build-nogui
    timed "everything, window included" configure_and_build build
    timed "every test" run_tests build
    # Once more under AddressSanitizer and UBSan, where any report fails the test that made it.
    timed "everything under AddressSanitizer and UBSan" \
      configure_and_build build-asan -DDORVANE_SANITIZE=ON -DDORVANE_BUILD_BENCH=OFF
    ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_init_order=1 \
      UBSAN_OPTIONS=print_stacktrace=1 LSAN_OPTIONS=suppressions="$here/tests/lsan.supp" \
      timed "every test under the sanitizers" run_tests build-asan
    say "times: ${times[*]}"
    ;;
  *)
    sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//'
    exit 64
    ;;
esac
