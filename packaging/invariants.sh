#!/usr/bin/env bash
# Called by ./test --invariants: the tests that open companies, on an SQLite that checks its own invariants at every step:
# that of this machine's Debian package, made of its sources with SQLITE_DEBUG. Further options go to ctest.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/packages.sh
install_packages build window "core tests" tests invariants
build test
made=$PWD/build/sqlite
mkdir -p "$made/lists" "$made/cache/archives/partial"
key=/usr/share/keyrings/debian-archive-keyring.gpg
apt-get indextargets --format "deb-src [signed-by=$key] \$(REPO_URI) \$(CODENAME) \$(COMPONENT)" 'Created-By: Packages' \
    'Origin: Debian' | sort -u >"$made/sources.list"
fetch() {
    (cd "$made" && apt-get -qq -o "Dir::Etc::sourcelist=$made/sources.list" -o Dir::Etc::sourceparts=/dev/null \
        -o "Dir::State::lists=$made/lists" -o "Dir::Cache=$made/cache" -o APT::Sandbox::User=root "$@")
}
version=$(dpkg-query -W -f '${source:Version}' libsqlite3-0)
if [ ! -e "$made/of-$version" ]; then
    rm -rf "$made"/sqlite3-* "$made"/of-*
    fetch update
    fetch source "sqlite3=$version" >/dev/null
    sources=("$made"/sqlite3-*/)
    (cd "${sources[0]}" && ./configure --disable-tcl --disable-readline >/dev/null && make sqlite3.c >/dev/null)
    # What Debian's library can do, this one can.
    mapfile -t options < <(grep -o -- '-DSQLITE_[A-Z0-9_=]*' "${sources[0]}debian/rules" | sort -u)
    cc -shared -fPIC -O1 -g1 -Wl,-soname,libsqlite3.so.0 "${options[@]}" -DSQLITE_DEBUG -DSQLITE_ENABLE_API_ARMOR \
        -o "$made/libsqlite3.so.0" "${sources[0]}sqlite3.c" -lm
    touch "$made/of-$version"
fi
export LD_LIBRARY_PATH=$made
ldd build/test/tests/test_engine | grep -q "$made/libsqlite3" || { echo "The tests do not find $made/libsqlite3.so.0." >&2; exit 1; }
ctest --test-dir build/test -j "$(nproc)" --output-on-failure --timeout 300 --no-tests=error \
    -R '^(engine|db|definitions|discounts|import|tradeformats|preview|history|undo|startup|cli|faults)\.' "$@"
