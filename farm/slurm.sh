#!/bin/bash
# SPDX-License-Identifier: MIT
# farm/slurm.sh IN OUT OPTIONS...: the same as an array job of Slurm, whose nodes see IN and OUT under the same paths.
# Options of sbatch may come from its variables: SBATCH_PARTITION=short SBATCH_WAIT=1 farm/slurm.sh ...
set -euo pipefail
. "$(dirname "$0")/prepare.sh"

# Slurm limits the size of an array (MaxArraySize): each task takes every TASKS-th picture.
tasks=$(wc -l <"$list")
[ "$tasks" -le "${TASKS:-1000}" ] || tasks=${TASKS:-1000}
[ "$tasks" -gt 0 ] || exit 0
sbatch --array="0-$((tasks - 1))" --output="$out/.farm/slurm-%A_%a.log" "$(dirname "$0")/task.sbatch" \
    "$list" "$in" "$out" "$kestrel" "$@"
