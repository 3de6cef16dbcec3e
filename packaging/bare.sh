#!/usr/bin/env bash
# bare.sh [SUITE]: makes a clean Debian root (bookworm unless told) from the mirror that this machine's apt uses, runs
# ./run alone in it, and checks that every job of the demo ran. As root; the root is removed afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/root.sh
make_root bare "$@"

copy_sources
echo "Running ./run in it ..."
started=$SECONDS
in_root /kolmera/run >"$log" 2>&1 </dev/null || {
    tail -n 40 "$log" >&2
    echo "FAILED: ./run on a bare $suite; all of it is in $log" >&2
    exit 1
}

# Each job ran and shows products that it changed or made, but for those that their limits stop.
jobs=$(tail -n +2 data/demo/jobs.tsv | cut -f 1 | grep -vxF -f <(tail -n +2 data/demo/limits.tsv | cut -f 1))
while IFS= read -r job; do
    awk -v heading="== $job" '/^== / { on = $0 == heading } on && /purchase price|new at/ { found = 1 } END { exit !found }' "$log" ||
        { echo "FAILED: the job $job changed nothing on a bare $suite; $log" >&2; exit 1; }
done <<<"$jobs"
rm "$log"
echo "./run on a bare $suite: $(wc -l <<<"$jobs") jobs in $((SECONDS - started)) s, packages included"
