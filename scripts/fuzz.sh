#!/usr/bin/env bash
# Runs each fuzz target for some seconds (the first argument, default 60) from the seeds in fuzz/seeds.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds="${1:-60}"
[[ "$seconds" =~ ^[1-9][0-9]*$ ]] || die "usage: fuzz.sh [SECONDS]"
need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CLANG_PACKAGES[@]}"
build fuzz
tests/support/make-pictures.sh build/fuzz/seeds/pictures

shopt -s nullglob
targets=(build/fuzz/bin/fuzz_*)
((${#targets[@]})) || die "there are no fuzz targets in build/fuzz/bin"
dictionaries=(fuzz/*.dict)
for target in "${targets[@]}"; do
  name="$(basename "$target")"
  corpus="build/fuzz/corpus/$name"
  mkdir -p "$corpus"
  # Seeds of this target, made or kept, else those that lie in the folder itself.
  seeds=(build/fuzz/seeds/"${name#fuzz_}"/)
  [[ -d "${seeds[0]}" ]] || seeds=(fuzz/seeds/"${name#fuzz_}"/)
  [[ -d "${seeds[0]}" ]] || seeds=(fuzz/seeds/)
  [[ -d "${seeds[0]}" ]] || seeds=()
  say "$name for $seconds s"
  TMPDIR=build/fuzz "$target" -max_total_time="$seconds" -rss_limit_mb=1024 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/$name-" "${dictionaries[@]/#/-dict=}" "$corpus" "${seeds[@]}" 2>&1 |
    grep -E '^(stat::|==|SUMMARY|artifact|Test unit)|ERROR|DONE' || true
  ((PIPESTATUS[0] == 0)) || die "$name found something: see build/fuzz/$name-*"
done
