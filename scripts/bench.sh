#!/usr/bin/env bash
# Measures the module beside its peers and prints one table. Arguments go to the benchmark program:
# --benchmark_filter=process
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${BENCH_PACKAGES[@]}" "${PEER_PACKAGES[@]}" "${MORE_PEER_PACKAGES[@]}"
build release vl_bench
say "beside"
dpkg-query -W -f '   ${Package} ${Version}\n' libsoxr0 libsamplerate0 libswresample4 libspeexdsp1 libzita-resampler1 \
  libgstreamer-plugins-base1.0-0 libsndfile1 ffmpeg sox mediainfo
build/release/bin/vl_bench "$@"
