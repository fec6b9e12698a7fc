# shellcheck shell=bash disable=SC2034 # the package lists are used by the scripts that source this one
# Sourced by the scripts beside it: where the project lies, and how what it needs gets onto the machine.

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$ROOT" || exit 1

BUILD_PACKAGES=(git ca-certificates g++ cmake ninja-build pkg-config libcli11-dev libfmt-dev libsqlite3-dev nlohmann-json3-dev
  libjpeg62-turbo-dev libpng-dev libgif-dev libavformat-dev libavcodec-dev libavutil-dev libtag1-dev
  libcairo2-dev libfontconfig-dev libfftw3-dev python3 python3-cffi)
TEST_PACKAGES=(libgtest-dev binutils sox sndfile-programs imagemagick-6.q16 ffmpeg fish zsh groff-base mandoc
  python3-numpy python3-soundfile python3-matplotlib)
BENCH_PACKAGES=(libbenchmark-dev)
PEER_PACKAGES=(libsoxr-dev libsamplerate0-dev libswresample-dev libavutil-dev libspeexdsp-dev libzita-resampler-dev libsndfile1-dev)
MORE_PEER_PACKAGES=(libgstreamer-plugins-base1.0-dev mediainfo sox ffmpeg)
CLANG_PACKAGES=(clang clang-format clang-tidy libclang-rt-14-dev)
COVERAGE_PACKAGES=(llvm python3)
CROSS_PACKAGES=(g++-aarch64-linux-gnu qemu-user)
ABI_PACKAGES=(abigail-tools)
MACHINES_PACKAGES=(parallel sox jq)
DASK_PACKAGES=(python3-distributed python3-numpy python3-cffi sox jq)
SLURM_PACKAGES=(slurm-wlm munge sox jq)
DOCS_PACKAGES=(doxygen mandoc python3)
DEMO_PACKAGES=(alsa-utils sox libimage-exiftool-perl)
PACKAGE_PACKAGES=(dpkg-dev lintian)
TRY_PACKAGES=(debootstrap dpkg-dev sox)

JOBS="$(nproc)"

say() { printf '== %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# need PACKAGE...: installs those that are missing; asks no package server when none is.
need() {
  command -v dpkg-query >/dev/null || die "this is no Debian; install these by hand: $*"
  local package missing=()
  for package in "$@"; do
    [[ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" == installed ]] || missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  command -v apt-get >/dev/null || die "apt-get isn't there; install these by hand: ${missing[*]}"
  local as_root=()
  if ((EUID != 0)); then
    command -v sudo >/dev/null || die "run as root, or install these by hand: ${missing[*]}"
    as_root=(sudo)
  fi
  say "installing ${missing[*]}"
  local log
  log="$(mktemp)"
  if ! { "${as_root[@]}" apt-get update -q &&
    "${as_root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive \
      apt-get install -y -q --no-install-recommends "${missing[@]}"; } 2>&1 | tell_steps "$log"; then
    cat "$log" >&2
    rm -f "$log"
    die "installing failed"
  fi
  rm -f "$log"
}

# tell_steps LOG: keeps what a long command prints in a file, and tells of it how far it is: each package that
# apt-get has set up, and a tenth of Ninja's steps at a time.
tell_steps() {
  local line count=0 total=0 tenth=0
  while IFS= read -r line; do
    printf '%s\n' "$line" >>"$1"
    if [[ "$line" =~ ,\ ([0-9]+)\ newly\ installed ]]; then
      total="${BASH_REMATCH[1]}"
    elif [[ "$line" =~ ^Setting\ up\ ([^ ]+) ]]; then
      count=$((count + 1))
      printf '   %d of %d: %s\n' "$count" "$total" "${BASH_REMATCH[1]}"
    elif [[ "$line" =~ ^\[([0-9]+)/([0-9]+)\] ]] && ((BASH_REMATCH[1] * 10 / BASH_REMATCH[2] > tenth)); then
      tenth=$((BASH_REMATCH[1] * 10 / BASH_REMATCH[2]))
      printf '   %d of %d\n' "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}"
    fi
  done
}

# What ships; tests and benchmarks are built by the scripts that run them.
SHIPPED=(VlACWav3 vlmedia VlDSAudioStreamReader vlwav vlwav_pages vlwav_python)

# Of a build that makes nothing else, so that the packages of the others needn't be there. Each preset turns them on
# again.
SHIPPED_ALONE=(-D VL_TESTS=OFF -D VL_BENCH=OFF)
CONFIGURE=()

# build PRESET [TARGET...]: configures and builds a preset, all of it or some targets; tells how far it is, and all of
# what was said if it fails. CONFIGURE: options in place of the preset's.
build() {
  say "building $1"
  local log="build/$1.log"
  mkdir -p build
  : >"$log"
  if ! { cmake --preset "$1" "${CONFIGURE[@]}" && cmake --build --preset "$1" -j "$JOBS" ${2:+--target "${@:2}"}; } 2>&1 |
    tell_steps "$log"; then
    cat "$log" >&2
    die "the build of preset $1 failed"
  fi
}
