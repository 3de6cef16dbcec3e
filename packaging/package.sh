#!/usr/bin/env bash
# package.sh [SUITE]: makes the Debian packages in build/packages, checks them, installs them on a clean Debian, runs a job of
# the demo there, and removes them: nothing may be left. As root.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${KOLMERA_ROOT:-}" != unshared ]; then
    source packaging/packages.sh
    install_packages build window package
    build release
    cmake --build --preset release --target package-files
    rm -rf build/packages
    (cd build/release && cpack -B ../packages >/dev/null)
fi
source packaging/root.sh
make_root package "$@"

desktop-file-validate packaging/install/kolmera.desktop
appstreamcli validate --no-net build/release/kolmera.metainfo.xml
lintian --fail-on error build/packages/*.deb

echo "Installing the packages on it ..."
in_root apt-get update -qq
in_root apt-get install -y -qq --no-install-recommends man-db >"$log" 2>&1
in_root find / -xdev \( -path /proc -o -path /var -o -path /tmp \) -prune -o -print | sort >"$log.before"
cp build/packages/*.deb "$root/tmp/"
in_root sh -c 'dpkg-query -W -f "\${Package}\n" | sort' >"$log.packages"
in_root sh -c 'apt-get install -y -qq --no-install-recommends /tmp/*.deb' >>"$log" 2>&1 || { tail -n 20 "$log" >&2; exit 1; }
in_root kolmera-cli --version
in_root kolmera-cli demo /tmp/demo >/dev/null
status=0
in_root env LC_ALL=sv_SE.UTF-8 kolmera-cli run '(FINFO)' --data /tmp/demo --summary /tmp/summary.json || status=$?
[ $status -eq 3 ] || { echo "FAILED: the job ended with $status" >&2; exit 1; }
grep -q '"new": [1-9]' "$root/tmp/summary.json" || { echo "FAILED: no new products" >&2; exit 1; }
in_root man -P cat kolmera-cli-run | grep -q -- --summary || { echo "FAILED: no manual page" >&2; exit 1; }
ldd_missing=$(in_root ldd /usr/lib/kolmera/kolmera /usr/lib/kolmera/kolmera-access-reader | grep 'not found' || true)
[ -z "$ldd_missing" ] || { echo "FAILED: $ldd_missing" >&2; exit 1; }

echo "Removing them ..."
in_root apt-get purge -y -qq kolmera kolmera-cli kolmera-doc >>"$log" 2>&1
in_root sh -c 'dpkg-query -W -f "\${Package}\n" | sort' | comm -13 "$log.packages" - |
    xargs chroot "$root" apt-get purge -y -qq >>"$log" 2>&1
in_root find / -xdev \( -path /proc -o -path /var -o -path /tmp \) -prune -o -print | sort | grep -i kolmera &&
    { echo "FAILED: that was left" >&2; exit 1; }
rm "$log" "$log".*
echo "Packages: $(ls build/packages | tr '\n' ' ')"
