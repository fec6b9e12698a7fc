#!/usr/bin/env bash
# Shows that the converter's NEON kernel gives the samples of the definition: builds the converter for aarch64
# and plays it lives (the first argument, default 100) under emulation.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${CROSS_PACKAGES[@]}"
out=build/neon
mkdir -p "$out"
converter=AudioCodec/wave/converter
sources=()
for source in "$converter"/*.cpp; do
  case "$(basename "$source")" in
    KernelSse2.cpp | KernelAvx*.cpp) ;;
    *) sources+=("$source") ;;
  esac
done
say "building for aarch64"
aarch64-linux-gnu-g++ -std=c++20 -O2 -ffp-contract=off -Wall -Wextra -Werror -static -I. \
  "${sources[@]}" tests/wave/PlayScripts.cpp -o "$out/play-scripts"
say "running"
qemu-aarch64 "$out/play-scripts" "${1:-100}"
