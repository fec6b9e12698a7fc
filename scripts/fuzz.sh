#!/usr/bin/env bash
# Runs each fuzz target for some minutes (the first argument, default 1), as many at once as there are cores, or
# one of them (the second, with or without "fuzz_") on all cores. Ends with a table, and with 1 if one found something.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

minutes="${1:-1}"
chosen="${2:-}"
[[ "$minutes" =~ ^[1-9][0-9]*$ ]] || die "usage: fuzz.sh [MINUTES] [TARGET]"
need "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${CLANG_PACKAGES[@]}"
build fuzz
build/fuzz/bin/make_seeds build/fuzz/seeds
tests/support/make-pictures.sh build/fuzz/seeds/pictures

targets=(build/fuzz/bin/fuzz_*)
targets=("${targets[@]##*/fuzz_}")
runs=("${targets[@]}")
if [[ -n "$chosen" ]]; then
  targets=("${chosen#fuzz_}")
  [[ -x "build/fuzz/bin/fuzz_${targets[0]}" ]] || die "there is no target $chosen"
  runs=()
  for ((core = 0; core < JOBS; ++core)); do runs+=("${targets[0]}"); done
fi

# Files that the targets work on: in memory, where there is such a place.
place=build/fuzz
[[ -w /dev/shm ]] && place=/dev/shm
scratch="$(mktemp -d -p "$place" vlwav-fuzz-XXXXXX)"
trap 'rm -rf "$scratch"' EXIT
logs=build/fuzz/logs
rm -rf "$logs"
mkdir -p "$logs" build/fuzz/found

# run NAME NUMBER: one process, which shares its corpus with others of its target.
run() {
  local corpus="build/fuzz/corpus/fuzz_$1"
  mkdir -p "$corpus" "$scratch/$2"
  TMPDIR="$scratch/$2" ASAN_OPTIONS=intercept_tls_get_addr=0 "build/fuzz/bin/fuzz_$1" -max_total_time=$((minutes * 60)) \
    -timeout=25 -rss_limit_mb=1024 -malloc_limit_mb=256 -max_len=65536 -print_final_stats=1 -dict=fuzz/ids.dict \
    -artifact_prefix="build/fuzz/found/$1-" "$corpus" "build/fuzz/seeds/$1" >"$logs/$1.$2" 2>&1 || touch "$logs/$1.failed"
}

for number in "${!runs[@]}"; do
  # One that ended beside another lets wait return at once, for as long as nothing has asked for it.
  while (($(jobs -pr | wc -l) >= JOBS)); do wait -n; done
  say "${runs[number]} for $minutes min"
  run "${runs[number]}" "$number" &
done
wait

# number NAME PATTERN: the greatest that follows it in the last lines of the target's processes.
number() { cat "$logs/$1".[0-9]* | grep -oE "$2 *[0-9]+" | grep -oE '[0-9]+$' | sort -n | tail -1; }

found=0
printf '%-12s %12s %8s %8s %8s  %s\n' target executions edges features corpus found
for name in "${targets[@]}"; do
  executions="$(cat "$logs/$name".[0-9]* | awk '/^stat::number_of_executed_units/ { sum += $2 } END { print sum + 0 }')"
  verdict=nothing
  if [[ -e "$logs/$name.failed" ]]; then
    found=1
    verdict="$(cat "$logs/$name".[0-9]* | sed -nE 's/.*Test unit written to ([^ ]+).*/\1/p' | sort -u | paste -sd ' ')"
    [[ -n "$verdict" ]] || verdict="it ended: see $logs/$name.*"
  fi
  printf '%-12s %12d %8d %8d %8d  %s\n' "$name" "$executions" "$(number "$name" cov:)" "$(number "$name" ft:)" \
    "$(find "build/fuzz/corpus/fuzz_$name" -type f | wc -l)" "$verdict"
done
exit "$found"
