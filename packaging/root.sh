# Sourced by the scripts that try things on a clean Debian; they run as root.

# make_root PART [SUITE]: installs PART of packages.txt and makes a clean Debian root (bookworm unless told) from the mirror
# that this machine's apt uses. Sets root, suite and log. The calling script is started anew in name spaces of its own, so
# that mounts and processes of the root end with it; the root is removed afterwards.
make_root() {
    local part=$1
    suite=${2:-bookworm}
    if [ "${KOLMERA_ROOT:-}" != unshared ]; then
        source packaging/packages.sh
        [ "$(id -u)" -eq 0 ] || { echo "This makes a Debian root, and needs to be run as root." >&2; exit 1; }
        install_packages "$part"
        KOLMERA_ROOT=unshared exec unshare --mount --pid --fork --kill-child "packaging/$(basename "$0")" "$suite"
    fi
    root=$(mktemp -d "${TMPDIR:-/var/tmp}/kolmera-root.XXXXXX")
    log=$root.log
    trap remove_root EXIT
    trap 'exit 1' INT TERM HUP

    local mirror
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' 'Label: Debian' | sort -u | head -n 1)
    echo "Making a $suite root ..."
    debootstrap --variant=minbase "$suite" "$root" ${mirror:+"$mirror"} >"$log" 2>&1 || { tail -n 20 "$log" >&2; exit 1; }
    apt-config dump | grep -E '^Acquire::(https?|ftp)::' >"$root/etc/apt/apt.conf.d/90mirror" || true
    chmod 755 "$root"  # as / is: tests become other users in it
    mount -t proc proc "$root/proc"
}

remove_root() {
    umount "$root/proc" 2>/dev/null || true
    rm -rf --one-file-system "$root"
}

# Copies the sources as they are now to /kolmera in the root.
copy_sources() {
    mkdir "$root/kolmera"
    git ls-files -co --exclude-standard -z | while IFS= read -r -d '' file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done |
        tar -cf - --null -T - | tar -xf - -C "$root/kolmera"
}

# in_root COMMAND ...: in the root, with an environment of its own.
in_root() {
    chroot "$root" env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive \
        ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} "$@"
}
