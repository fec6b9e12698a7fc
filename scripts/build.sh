#!/usr/bin/env bash
# Installs what is missing and makes the release build.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}"
CONFIGURE=("${SHIPPED_ALONE[@]}")
build release "${SHIPPED[@]}"
for file in lib/VlACWav3.so bin/vlwav; do
  [[ -f "build/release/$file" ]] || die "build/release/$file was not made"
  say "build/release/$file"
done
