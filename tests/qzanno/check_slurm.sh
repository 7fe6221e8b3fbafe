#!/usr/bin/env bash
# Renders captions as a job array on a Slurm cluster of only this machine, and compares with a plain run. The cluster,
# its keys and its state are in a temporary folder for the duration of the script.
# Usage: check_slurm.sh QZANNO. Exit code 77 where there is no Slurm, or none can be started.
set -euo pipefail
export QZANNO
QZANNO=$(realpath "$1")
skip() {
  echo "skipped: $1"
  exit 77
}
for program in munged slurmctld slurmd sbatch srun scontrol; do
  PATH=$PATH:/usr/sbin command -v "$program" >/dev/null || skip "install the package slurm-wlm"
done
PATH=$PATH:/usr/sbin

work=$(mktemp -d)
daemons=()
stop() {
  for daemon in "${daemons[@]}"; do kill "$daemon" 2>/dev/null || true; done
  for daemon in "${daemons[@]}"; do wait "$daemon" 2>/dev/null || true; done
  rm -rf "$work"
}
trap stop EXIT
chmod 755 "$work"
# Unused ports; otherwise the daemons report it and the check is skipped.
port=$((20000 + $$ % 20000))
host=$(hostname -s)
mkdir "$work/munge" "$work/state" "$work/spool"
(umask 077 && head -c 1024 /dev/urandom >"$work/munge/key")
cat >"$work/slurm.conf" <<CONF
ClusterName=check
SlurmctldHost=$host(127.0.0.1)
SlurmctldPort=$port
SlurmdPort=$((port + 1))
SlurmUser=$(id -un)
SlurmdUser=$(id -un)
AuthType=auth/munge
AuthInfo=socket=$work/munge/socket
CommunicationParameters=NoInAddrAny,NoCtldInAddrAny
StateSaveLocation=$work/state
SlurmdSpoolDir=$work/spool
SlurmctldPidFile=$work/slurmctld.pid
SlurmdPidFile=$work/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
MpiDefault=none
ReturnToService=2
SchedulerParameters=sched_interval=1,batch_sched_delay=0
NodeName=$host NodeAddr=127.0.0.1 CPUs=2 State=UNKNOWN
PartitionName=all Nodes=$host Default=YES OverSubscribe=FORCE:4 State=UP
CONF
export SLURM_CONF=$work/slurm.conf
cd "$work"

munged --foreground --force --key-file="$work/munge/key" --socket="$work/munge/socket" --pid-file="$work/munge/pid" \
  --seed-file="$work/munge/seed" --log-file="$work/munge/log" >munged.log 2>&1 &
daemons+=($!)
sleep 1
slurmctld -D >slurmctld.log 2>&1 &
daemons+=($!)
slurmd -D -N "$host" >slurmd.log 2>&1 &
daemons+=($!)
for ((second = 0; ; ++second)); do
  # A later state may still have a suffix, such as "idle*".
  [ "$(timeout 5 sinfo --noheader --format=%t 2>/dev/null)" = idle ] && break
  [ $second -lt 30 ] && sleep 1 && continue
  tail -n 3 munged.log munge/log slurmctld.log slurmd.log 2>/dev/null || true
  skip "the cluster does not start"
done

for i in $(seq 10 21); do printf '00:00:%s,000 --> 00:00:%s,900\nTitle %s\n\n' "$i" "$i" "$((i / 2))"; done >captions.srt
render=("$QZANNO" render captions.srt -s 1280x720 -d 160x90 --manifest titles.jsonl -o titles)
mkdir whole array
(cd whole && cp ../captions.srt . && "${render[@]}")

# The job of docs/batch.md.
cat >job.sh <<JOB
#!/bin/sh
#SBATCH --array=1-4
#SBATCH --cpus-per-task=1
#SBATCH --requeue
#SBATCH --output=$work/array-%a.log
cd $work/array
srun ${render[*]} --resume
JOB
cp captions.srt array
timeout 120 sbatch --wait job.sh || { cat array-*.log slurmctld.log; exit 1; }
for task in 1 2 3 4; do
  grep -q "renders share $task of 4, as the task of a Slurm array" "array-$task.log" || { cat "array-$task.log"; exit 1; }
done
(cd array && "$QZANNO" manifest merge titles.*-of-4.jsonl -o titles.jsonl)
diff -r whole/titles array/titles
diff whole/titles.jsonl array/titles.jsonl
[ "$(ls array/titles | wc -l)" = 12 ]
echo "a job array of 4 tasks renders what one run does"
