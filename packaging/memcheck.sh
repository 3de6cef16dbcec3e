#!/usr/bin/env bash
# Called by ./test --memcheck: every kind of command on the demo under valgrind, with the optimised program. An error of
# memory or a lost block fails.
set -euo pipefail
cd "$(dirname "$0")/.."
source packaging/packages.sh
install_packages build memcheck
build release kolmera-cli language
program=$PWD/build/release/bin/kolmera-cli
work=$(mktemp -d "${TMPDIR:-/tmp}/kolmera-memcheck.XXXXXX")
trap 'rm -rf "$work"' EXIT
export HOME=$work XDG_CONFIG_HOME=$work LC_ALL=C.UTF-8
data=$work/data
failed=()

# check ALLOWED COMMAND ...: ALLOWED are the exit codes of a sound program.
check() {
    local allowed=$1 code=0
    shift
    valgrind --quiet --leak-check=full --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect \
        --error-exitcode=99 --log-file="$work/log" "$program" "$@" >"$work/out" 2>&1 </dev/null || code=$?
    if [[ " $allowed " == *" $code "* ]]; then
        echo "clean: kolmera-cli $*"
        return
    fi
    failed+=("kolmera-cli $* (exit code $code)")
    cat "$work/out" "$work/log" >&2
}
check 0 demo "$data"
mapfile -t jobs < <("$program" jobs --data "$data" --json | python3 -c '
import json, sys
for job in json.load(sys.stdin): print(job["job"])')
[ ${#jobs[@]} -gt 3 ] || { echo "The demo has no jobs." >&2; exit 1; }
for job in "${jobs[@]}"; do
    check "0 3 4" preview "$job" --data "$data"
    check "0 3 4" run "$job" --data "$data"
done
check "0 3 4" run "${jobs[3]}" --data "$data"
check 0 compare last --data "$data"
check 0 undo last --data "$data"
check 0 history --data "$data"
check 0 show last --data "$data" --save "$work/changes.xlsx"
check 0 convert "${jobs[-1]}" --output "$work/converted" --data "$data"
check 0 template export "${jobs[-1]}" "$work/template.json" --data "$data"
check 0 repair FTG1.mdb --data "$data"
check 0 --help
check 2 no-such-command
[ ${#failed[@]} -eq 0 ] || { printf 'FAILED: %s\n' "${failed[@]}" >&2; exit 1; }
