#!/usr/bin/env bash
# Measures the module beside its peers. Arguments go to the benchmark program: --benchmark_filter=Convert
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${BENCH_PACKAGES[@]}" "${PEER_PACKAGES[@]}"
build release vl_bench
build/release/bin/vl_bench "$@"
