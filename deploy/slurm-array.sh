#!/usr/bin/env bash
# A batch on many nodes, as an array of Slurm's, in which each task does its share:
#   sbatch --array=1-8 slurm-array.sh LIST.jsonl OUT [OPTION...]
# A task that a node's end has interrupted is queued again and goes on where it was; so is one whose photos may succeed
# later (exit code 75), where the cluster has RequeueExit=75.
#SBATCH --job-name=quorvane
#SBATCH --requeue
#SBATCH --ntasks=1
#SBATCH --signal=B:TERM@20
set -euo pipefail
list=$1 out=$2
# exec: Slurm's signals reach the batch.
exec quorvane batch --manifest "$list" -o "$out" "${@:3}" --shard auto --resume --jobs "${SLURM_CPUS_ON_NODE:-1}" --exit-codes sysexits
