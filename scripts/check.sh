#!/usr/bin/env bash
# What a change must pass before its tests are looked at: the floors that includes keep to,
# format, no warning of either compiler, the border of the C library, clang-tidy.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${BENCH_PACKAGES[@]}" "${PEER_PACKAGES[@]}" "${CLANG_PACKAGES[@]}" \
  "${ABI_PACKAGES[@]}"

say "floors"
scripts/check-includes.sh

say "format"
# The header of the C library has a form of its own, which is fixed.
find AudioCodec platform capi host riff tests bench fuzz docs \
  \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -path 'docs/*.c' \) ! -path capi/vlwav.h -print0 |
  xargs -0 -r clang-format --dry-run -Werror

build release "${SHIPPED[@]}" vl_bench # g++, warnings are errors; tests are built below and by test.sh
build tsan                             # clang, likewise

scripts/check-abi.sh
scripts/docs.sh build/release/bin/vlwav_pages

say "kernels"
# A function that two files share is the linker's to choose, and would be the one for a newer processor.
shared="$(nm -C build/release/AudioCodec/CMakeFiles/vlacwav3_objects.dir/wave/converter/Kernel[AN]*.o | grep ' W ' || true)"
[[ -z "$shared" ]] || die "the kernels share functions with other files: $shared"

# What ships; tests are held to the warnings of both compilers, benchmarks to those of g++.
# The fuzzer's targets are compiled here alone, as their own build would. Sources that are compiled as one are looked at as
# one: most of the time goes into the system's headers.
say "clang-tidy"
log=build/clang-tidy.log
cmake --preset fuzz >"$log"
if ! { run-clang-tidy -p build/tsan -j "$JOBS" -quiet "^$ROOT/(build/tsan/)?(AudioCodec|platform|capi|host|riff|docs)/.*\.c(pp|xx)$" &&
  run-clang-tidy -p build/fuzz -j "$JOBS" -quiet "^$ROOT/fuzz/.*\.cpp$"; } >>"$log" 2>&1; then
  grep -vE '^(clang-tidy |[0-9]+ warnings? (generated|treated)|Suppressed |Use -header-filter)' "$log" >&2 || true
  die "clang-tidy found something"
fi
say "all clean"
