#!/usr/bin/env bash
# Runs the recipe of docs/many-machines.md for GNU parallel: many-parallel.sh [COUNT [VLWAV]], with COUNT files (2000)
# and the program VLWAV (that of the release build, which is made). Two hosts are played by this one, behind a stand-in
# for ssh. A worker is killed in the middle and started again.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
source scripts/many-common.sh

vlwav="${2:-}"
if [[ -z "$vlwav" ]]; then
  need "${BUILD_PACKAGES[@]}" "${MACHINES_PACKAGES[@]}"
  CONFIGURE=("${SHIPPED_ALONE[@]}")
  build release "${SHIPPED[@]}"
  vlwav="$ROOT/build/release/bin/vlwav"
fi
many_start "$vlwav" "$(dirname "$(dirname "$vlwav")")/many-parallel" "${1:-2000}"

# A host that can be reached: whatever is asked of it, it does in a shell of its own, which it names as a host does that
# is logged in to. Without the name GNU parallel does nothing there, and calls that a success.
cat >"$work/bin/stand-in" <<'END'
#!/bin/sh
while [ "${1#-}" != "$1" ]; do shift; done
echo "$1" >>"$HOSTS_SEEN"
shift
[ "$1" != -- ] || shift
SHELL=/bin/sh exec sh -c "$*"
END
chmod +x "$work/bin/stand-in"
export HOSTS_SEEN="$work/hosts"

say "8 shards on two hosts"
cd "$work"
parallel --ssh stand-in --sshlogin 2/alpha,2/beta --workdir "$work" --env PATH --env VELTO_REGISTRY \
  --joblog jobs --retries 3 \
  vlwav convert --files-from list --shard {}/8 -o out --newer --rate 44100 --channels 2 --jobs 1 --json \
  ::: {1..8} >summaries.json 2>notes &
job=$!
many_kill "$job"
wait "$job" || die "parallel ended with $?: $(cat notes)"
for host in alpha beta; do
  grep -q "^$host$" hosts || die "$host had nothing to do"
done
many_check summaries.json
