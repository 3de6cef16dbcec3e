#!/usr/bin/env bash
# bare-core.sh [SUITE]: builds kolmera-cli and its tests on a clean Debian root (bookworm unless told) that has no Qt, and
# runs them. As root; the root is removed afterwards. Nothing is optimised: what counts is that it builds.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/root.sh
make_root bare "$@"

copy_sources
# What each step does, with its output in the log.
step() {
    echo "$1 ..."
    in_root sh -c "cd /kolmera && $2" >>"$log" 2>&1 </dev/null || {
        tail -n 40 "$log" >&2
        echo "FAILED: $1 on a bare $suite; all of it is in $log" >&2
        exit 1
    }
}
step "Installing the packages" "bash -c '. packaging/packages.sh; install_packages build \"core tests\"'"
if in_root dpkg-query -W -f '${Package}\n' | grep -E '^(libqt|qt)[0-9]'; then
    echo "FAILED: these packages of Qt were installed" >&2
    exit 1
fi
step "Building without a window" "cmake -G Ninja -B build -DKOLMERA_WINDOW=OFF -DBUILD_TESTING=ON -DKOLMERA_WERROR=ON && nice cmake --build build"
step "Testing" "nice ctest --test-dir build -j $(nproc) --output-on-failure --timeout 300 --no-tests=error"
sed -n '/^[0-9]*% tests passed/,$p' "$log"
rm "$log"
echo "kolmera-cli builds and tests on a bare $suite without Qt"
