#!/usr/bin/env bash
# Runs the tests: those that use threads under ThreadSanitizer, then all of them under AddressSanitizer and
# UndefinedBehaviorSanitizer. The output ends on the summary of the latter.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CLANG_PACKAGES[@]}"
build tsan
ctest --preset tsan -j "$JOBS"
build asan
ctest --preset asan -j "$JOBS"
