#!/usr/bin/env bash
# Tells how much of the product the tests and the fuzzer's collected inputs reach together: lines and branches of
# AudioCodec, riff and platform, a row a folder, and pages in build/coverage/pages that mark what no run reached.
# Inputs are taken from build/fuzz/seeds and build/fuzz/corpus, where scripts/fuzz.sh leaves them.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CLANG_PACKAGES[@]}" "${COVERAGE_PACKAGES[@]}"
build coverage

counts="$ROOT/build/coverage/counts"
rm -rf "$counts"
mkdir -p "$counts"
# A pool of files for each program and library: several processes at once add to them in turn, and a library that is
# unloaded and loaded again adds to its own.
export LLVM_PROFILE_FILE="$counts/%4m.profraw"

say "running the tests"
# One that fails here fails in test.sh too, and is told there.
ctest --preset coverage -j "$JOBS" >build/coverage/tests.log 2>&1 || true
grep -E '^[0-9]+% tests passed' build/coverage/tests.log || die "the tests didn't run: see build/coverage/tests.log"

shopt -s nullglob
for target in build/coverage/bin/fuzz_*; do
  name="$(basename "$target")"
  inputs=(build/fuzz/seeds/"${name#fuzz_}"/ build/fuzz/corpus/"$name"/)
  for i in "${!inputs[@]}"; do [[ -d "${inputs[i]}" ]] || unset "inputs[i]"; done
  ((${#inputs[@]})) || continue
  say "running what $name collected"
  TMPDIR=build/coverage "$target" -runs=0 -rss_limit_mb=0 "${inputs[@]}" >"build/coverage/$name.log" 2>&1 ||
    say "$name failed: see build/coverage/$name.log"
done

say "counting"
llvm-profdata-14 merge -sparse "$counts"/*.profraw -o "$counts/all.profdata"
objects=(build/coverage/bin/module_tests)  # the first is named alone
while IFS= read -r object; do
  objects+=(-object "$object")
done < <(find build/coverage/bin build/coverage/lib -type f \
  \( -perm -u+x -o -name '*.so*' -o -name '*.ax' \) ! -name '*.sh' ! -name '*.cmake' |
  while IFS= read -r file; do
    [[ "$(head -c 4 "$file" | tr -d '\0')" == $'\x7fELF' ]] && readelf -SW "$file" | grep -q __llvm_covmap && echo "$file"
  done)
sources=(AudioCodec riff platform)
# Tables that the compiler works out: no run passes there.
compiled='platform/base/Guid\.h|wave/StockFormat(s\.h|Texts\.cpp)|riff/TagRows\.h'
llvm-cov-14 show "${objects[@]}" -ignore-filename-regex "$compiled" -instr-profile "$counts/all.profdata" -format html -show-branches count \
  -output-dir build/coverage/pages "${sources[@]}" >/dev/null
llvm-cov-14 export "${objects[@]}" -ignore-filename-regex "$compiled" -instr-profile "$counts/all.profdata" -summary-only "${sources[@]}" \
  >build/coverage/summary.json
python3 - "$ROOT" build/coverage/summary.json <<'PYTHON'
import collections, json, os, sys

root, path = sys.argv[1:]
folders = collections.defaultdict(lambda: [0] * 4)
for file in json.load(open(path))["data"][0]["files"]:
    name = os.path.relpath(file["filename"], root)
    summary = file["summary"]
    numbers = [summary[kind][what] for kind in ("lines", "branches") for what in ("covered", "count")]
    for row in {os.path.dirname(name), name.split("/")[0], "all"}:
        folders[row] = [a + b for a, b in zip(folders[row], numbers)]
print(f"{'folder':32} {'lines':>14} {'':>7} {'branches':>14}")
for row in sorted(folders, key=lambda name: (name == "all", name)):
    lines, all_lines, branches, all_branches = folders[row]
    print(f"{row:32} {lines:>6} of {all_lines:>5} {lines / max(all_lines, 1):7.1%} "
          f"{branches:>6} of {all_branches:>5} {branches / max(all_branches, 1):7.1%}")
PYTHON
