#!/usr/bin/env bash
# clang-tidy over the sources and the tests, with the checks of .clang-tidy; every finding is an error.
#   packaging/tidy.sh               all files
#   packaging/tidy.sh FILE ...      these
#   packaging/tidy.sh --changed     those that differ from the main branch, or on it from the commit before
# The fuzzers are left out: they need options of their own (tests/fuzz).
# TIDY_SECONDS, where it is set, is how long new files are begun; how many were left is told, and is no error.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/packages.sh

changed_files() {
    local base
    base=$(git merge-base HEAD origin/main 2>/dev/null || git rev-parse HEAD)
    [ "$base" != "$(git rev-parse HEAD)" ] || base=$(git rev-parse --verify -q HEAD~1) || {
        echo "There is no earlier commit here to compare with." >&2
        return 0
    }
    git diff --name-only --diff-filter=d "$base" -- 'src/*.cpp' 'tests/*.cpp' ':!tests/fuzz'
}

case "${1:-}" in
    '') files=$(git ls-files -co --exclude-standard -- 'src/*.cpp' 'tests/*.cpp' ':!tests/fuzz') ;;
    --changed) files=$(changed_files) ;;
    *) files=$(printf '%s\n' "$@") ;;
esac
[ -n "$files" ] || { echo "No source file to look at."; exit 0; }

install_packages build window "core tests" tests clang tidy
# Nothing needs building: all sources that are not written by hand are made by configuring.
cmake --preset tidy -Wno-dev >/dev/null
echo "clang-tidy over $(wc -l <<<"$files") files"
left=$(mktemp)
trap 'rm -f "$left"' EXIT
export left deadline=$(($(date +%s) + ${TIDY_SECONDS:-86400}))
# shellcheck disable=SC2016
xargs -d '\n' -P "$(nproc)" -n 4 bash -c '
    if (($(date +%s) < deadline)); then clang-tidy -p build/tidy --quiet "$@"; else printf "%s\n" "$@" >>"$left"; fi
' tidy <<<"$files"
[ ! -s "$left" ] || echo "Not looked at, for lack of time: $(wc -l <"$left") files. ./test --tidy FILE ... looks at them."
