#!/usr/bin/env bash
# What takes too long for every push: each kind of test, the others going on when one fails. As root, for --bare.
set -uo pipefail
cd "$(dirname "$0")/.."
export KOLMERA_ALL_WORLDS=1  # also on database servers
failed=()
for kind in "" --long --tidy --clang --sanitize --memcheck --invariants --bare "--bare --no-window" --package; do
    echo "=== ./test $kind"
    ./test $kind || failed+=("./test $kind")
done
[ ${#failed[@]} -eq 0 ] || { printf 'FAILED: %s\n' "${failed[@]}" >&2; exit 1; }
