#!/usr/bin/env bash
# Runs the recipe of docs/many-machines.md for a Slurm array: many-slurm.sh [COUNT], with so many files (2000). Two nodes
# are played by this machine; the daemons are this script's own and go with it. A worker is killed in the middle and
# started again.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
source scripts/many-common.sh

need "${BUILD_PACKAGES[@]}" "${SLURM_PACKAGES[@]}"
CONFIGURE=("${SHIPPED_ALONE[@]}")
build release "${SHIPPED[@]}"
many_start "$ROOT/build/release/bin/vlwav" "$ROOT/build/release/many-slurm" "${1:-2000}"

# All that the daemons have lies in a folder that nobody else may write to, or munged refuses its key.
daemons="$(mktemp -d)"
chmod 755 "$daemons" # whoever has the socket's name may ask
mkdir "$daemons"/{munge,state,alpha,beta}
pids=()
stop() {
  local pid
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null || true; done
  rm -rf "$daemons"
}
trap stop EXIT

start() { # PROGRAM ARGUMENT...: in the foreground of its own job, so that its number is known
  "$@" >>"$daemons/log" 2>&1 &
  pids+=("$!")
}

say "starting a controller and two nodes"
head -c 128 /dev/urandom >"$daemons/munge/key"
chmod 400 "$daemons/munge/key"
cat >"$daemons/slurm.conf" <<END
ClusterName=many
SlurmctldHost=$(hostname -s)(localhost)
SlurmctldPort=16817
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthInfo=socket=$daemons/munge/socket
CredType=cred/munge
StateSaveLocation=$daemons/state
SlurmdSpoolDir=$daemons/%n
SlurmctldPidFile=$daemons/slurmctld.pid
SlurmdPidFile=$daemons/%n.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
MpiDefault=none
SchedulerParameters=sched_interval=1
NodeName=alpha NodeHostname=$(hostname -s) NodeAddr=localhost Port=16818 CPUs=1
NodeName=beta NodeHostname=$(hostname -s) NodeAddr=localhost Port=16819 CPUs=1
PartitionName=all Nodes=ALL Default=YES State=UP
END
export SLURM_CONF="$daemons/slurm.conf"
start /usr/sbin/munged --foreground --key-file="$daemons/munge/key" --socket="$daemons/munge/socket" \
  --pid-file="$daemons/munge/pid" --log-file="$daemons/munge/log" --seed-file="$daemons/munge/seed"
until [[ -S "$daemons/munge/socket" ]]; do
  kill -0 "${pids[0]}" || die "munged: $(cat "$daemons/log")"
  sleep 0.1
done
start /usr/sbin/slurmctld -D -f "$SLURM_CONF"
for node in alpha beta; do start /usr/sbin/slurmd -D -N "$node" -f "$SLURM_CONF"; done
tries=0
until [[ "$(sinfo -h -t idle -o %D 2>/dev/null)" == 2 ]]; do
  ((++tries < 100)) || die "the nodes don't come up: $(tail -n 20 "$daemons/log")"
  sleep 0.2
done

cd "$work"
mkdir summaries
cat >job.sh <<'END'
#!/bin/bash
#SBATCH --job-name=convert --array=1-16 --ntasks=1 --cpus-per-task=1 --output=notes-%a
vlwav convert --files-from list --shard "$SLURM_ARRAY_TASK_ID/16" -o out --newer --rate 44100 --channels 2 \
  --jobs "${SLURM_CPUS_PER_TASK:-1}" --json >"summaries/$SLURM_ARRAY_TASK_ID.json"
END

say "an array of 16 tasks on two nodes"
sbatch --wait job.sh &
job=$!
many_kill "$job"
! wait "$job" || die "nobody told of the task that was killed"

unfinished="$(for i in {1..16}; do [[ -s "summaries/$i.json" ]] || echo "$i"; done | paste -sd, -)"
say "starting again what has no summary: $unfinished"
sbatch --wait --array="$unfinished" job.sh
many_check summaries/*.json
