#!/usr/bin/env bash
# Runs the recipe of docs/many-machines.md for Dask: many-dask.sh [COUNT [BUILD]], with COUNT files (2000) and what lies in
# the folder BUILD (the release build, which is made). The scheduler and two workers are this script's own and go with it.
# A worker is killed in the middle; the other one does its work again.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
source scripts/many-common.sh

need "${DASK_PACKAGES[@]}"
made="${2:-}"
if [[ -z "$made" ]]; then
  need "${BUILD_PACKAGES[@]}"
  CONFIGURE=("${SHIPPED_ALONE[@]}")
  build release "${SHIPPED[@]}" vlwav_python
  made="$ROOT/build/release"
fi
[[ -d "$made/python/vlwav" ]] || die "$made has no Python package"
many_start "$made/bin/vlwav" "$made/many-dask" "${1:-2000}"
cd "$work"
export PYTHONPATH="$made/python"
python=/usr/bin/python3 # the one that has Debian's packages

pids=()
stop() {
  local pid
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
}
trap stop EXIT

start() { # MODULE ARGUMENT...: a program of Dask, in the foreground of its own job, so that its number is known
  "$python" -m "$@" >>"$work/log" 2>&1 &
  pids+=("$!")
}

say "starting a scheduler and two workers"
start distributed.cli.dask_scheduler --no-dashboard --no-show --host 127.0.0.1 --port 0 --scheduler-file scheduler.json
for name in alpha beta; do
  start distributed.cli.dask_worker --no-dashboard --scheduler-file scheduler.json --no-nanny --nthreads 1 --name "$name" \
    --host 127.0.0.1 --local-directory "$work/$name"
  : >"workers/${pids[-1]}"
done

# The program as it stands in the guide.
sed -n '/^```python$/,/^```$/{/^```/d;p}' "$ROOT/docs/many-machines.md" >peaks.py

say "peaks.py on the cluster"
"$python" peaks.py scheduler.json list out >peaks.json 2>>log &
job=$!
pids+=("$job")
many_kill "$job"
wait "$job" || die "peaks.py ended with $?: $(tail -n 20 log)"

jq '{converted: map(select(.made)) | length, skipped: map(select(.made | not)) | length,
  failed: map(select(.failure)) | length}' peaks.json >summary.json
many_check summary.json

say "the peaks, by another program"
"$python" - <<'END_OF_PROGRAM' || die "the peaks aren't those of the outputs"
import array, json, os, sys, wave

def peak(path):
    with wave.open(path) as file:
        return max(map(abs, array.array("h", file.readframes(file.getnframes())))) / 32768

results = json.load(open("peaks.json"))
wrong = [r["name"] for r in results if r["peak"] != peak(os.path.join("expected", os.path.basename(r["name"])))]
print("\n".join(wrong), end="")
names = {os.path.basename(r["name"]) for r in results}
sys.exit(bool(wrong) or names != set(os.listdir("expected")))
END_OF_PROGRAM
say "every peak once, as the outputs have it"
