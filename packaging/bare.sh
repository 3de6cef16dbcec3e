#!/usr/bin/env bash
# bare.sh [SUITE]: makes a clean Debian root (bookworm unless told) from the mirror that this machine's apt uses, runs
# ./run alone in it, and checks that every job of the demo ran. As root; the root is removed afterwards.
set -euo pipefail
cd "$(dirname "$0")/.."
suite=${1:-bookworm}

# Mounts and processes of the root end with this script.
if [ "${KOLMERA_BARE:-}" != unshared ]; then
    source packaging/packages.sh
    [ "$(id -u)" -eq 0 ] || { echo "./test --bare makes a Debian root, and needs to be run as root." >&2; exit 1; }
    install_packages bare
    KOLMERA_BARE=unshared exec unshare --mount --pid --fork --kill-child packaging/bare.sh "$suite"
fi

root=$(mktemp -d "${TMPDIR:-/var/tmp}/kolmera-bare.XXXXXX")
log=$root.log
cleanup() {
    umount "$root/proc" 2>/dev/null || true
    rm -rf --one-file-system "$root"
}
trap cleanup EXIT
trap 'exit 1' INT TERM HUP

mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' 'Label: Debian' | sort -u | head -n 1)
echo "Making a $suite root ..."
debootstrap --variant=minbase "$suite" "$root" ${mirror:+"$mirror"} >"$log" 2>&1 || { tail -n 20 "$log" >&2; exit 1; }
apt-config dump | grep -E '^Acquire::(https?|ftp)::' >"$root/etc/apt/apt.conf.d/90mirror" || true

mkdir "$root/kolmera"
git ls-files -co --exclude-standard -z | while IFS= read -r -d '' file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done |
    tar -cf - --null -T - | tar -xf - -C "$root/kolmera"
mount -t proc proc "$root/proc"

echo "Running ./run in it ..."
started=$SECONDS
chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin ${http_proxy:+http_proxy="$http_proxy"} \
    ${https_proxy:+https_proxy="$https_proxy"} /kolmera/run >"$log" 2>&1 </dev/null || {
    tail -n 40 "$log" >&2
    echo "FAILED: ./run on a bare $suite; all of it is in $log" >&2
    exit 1
}

# Each job ran and shows products that it changed or made.
jobs=$(tail -n +2 data/demo/jobs.tsv | cut -f 1)
while IFS= read -r job; do
    awk -v heading="== $job" '/^== / { on = $0 == heading } on && /purchase price|new at/ { found = 1 } END { exit !found }' "$log" ||
        { echo "FAILED: the job $job changed nothing on a bare $suite; $log" >&2; exit 1; }
done <<<"$jobs"
rm "$log"
echo "./run on a bare $suite: $(wc -l <<<"$jobs") jobs in $((SECONDS - started)) s, packages included"
