#!/usr/bin/env bash
# Holds the border of the C library to the dump in capi/abi: a program that was compiled once runs with every later
# library of its soname, so nothing of vlwav.h goes or changes. --update writes the dump anew, for what was added.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

DUMP=capi/abi/libvlwav.so.1.xml
case "${*:-}" in
  '' | --update) ;;
  *) die "usage: $(basename "$0") [--update]" ;;
esac

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CLANG_PACKAGES[@]}" "${ABI_PACKAGES[@]}"
# A build with debug information, which tells the types; check.sh has made it already. Symbols and types are those of
# the release: a sanitizer adds none that the library shows.
build tsan vlwav_library

# What the header declares, and nothing of this machine: neither its folders nor the lines at which something stands. The
# header is named by its whole path, by which the debug information has it: else its structures would count as private.
now="$(mktemp)"
trap 'rm -f "$now"' EXIT
abidw --exported-interfaces-only --header-file "$ROOT/capi/vlwav.h" \
  --header-file "$ROOT/capi/vlwav_more.h" --drop-private-types --no-show-locs \
  --no-comp-dir-path --no-corpus-path --no-elf-needed --type-id-style hash --out-file "$now" build/tsan/lib/libvlwav.so.1
sed -i "s|path='$ROOT/|path='|" "$now"
grep -q "class-decl name='vlw_format' size-in-bits" "$now" || die "the dump doesn't know the structures of the header"

if [[ "${1:-}" == --update ]]; then
  mkdir -p "$(dirname "$DUMP")"
  cp "$now" "$DUMP"
  say "$DUMP is that of this build"
  exit 0
fi

[[ -f "$DUMP" ]] || die "$DUMP is missing; --update writes it"
say "border of libvlwav.so.1"
status=0
report="$(abidiff "$DUMP" "$now" 2>&1)" || status=$?
# abidiff tells by bits: 1 and 2 an error of its own or of its usage, 4 a change, 8 one that breaks programs.
((status == 0)) && exit 0
printf '%s\n' "$report" >&2
((status & 8)) && die "a program that was compiled once would break"
((status & 4)) && die "the border has changed; if it only grew, run scripts/check-abi.sh --update"
die "abidiff failed"
