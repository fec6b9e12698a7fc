#!/usr/bin/env bash
# Runs the tests: those that use threads under ThreadSanitizer, then all of them under AddressSanitizer and
# UndefinedBehaviorSanitizer. The output ends on the summary of the latter.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${MACHINES_PACKAGES[@]}" "${CLANG_PACKAGES[@]}"

# run_tests PRESET: runs them, and ends on the line that sums them up, after the list of those that didn't run.
run_tests() {
  local log="build/$1-tests.log" failed=0
  say "testing $1"
  ctest --preset "$1" -j "$JOBS" 2>&1 | tee "$log" || failed=1
  grep -E '^[0-9]+% tests passed' "$log" || failed=1
  return "$failed"
}

build tsan
run_tests tsan
build asan
run_tests asan
