#!/usr/bin/env bash
# check_hotfolder.sh BIN EXAMPLES WORK: lets the script of the hot folder, called as its unit does, read files that arrive
# in several ways.
set -euo pipefail
bin=$1 examples=$2 work=$3
export PATH="$bin:$PATH" KOLMERA_DATA="$work/data" PRICEFILE=Prisfiler/VERKTYG.TXT SETTLE=4
rm -rf "$work"
mkdir -p "$work"
kolmera-cli demo "$KOLMERA_DATA" >/dev/null
cp "$KOLMERA_DATA/$PRICEFILE" "$work/price.txt"
inbox="$work/in box"
mkdir "$inbox"

fail() {
    echo "FAILED: $1" >&2
    find "$inbox" >&2
    exit 1
}
hotfolder() { "$examples/kolmera-hotfolder" "$@"; }
# The one file of a folder whose name ends so.
only() {
    local found=("$inbox/$1"/*"$2")
    [ ${#found[@]} -eq 1 ] && [ -e "${found[0]}" ] || fail "not one *$2 in $1"
    echo "${found[0]}"
}

hotfolder "Smedhult verktyg" "$inbox" || fail "an empty folder is a failure"

# A transfer under way that keeps the file's old date, a finished file behind it, and a file that is still hidden.
cp "$work/price.txt" "$inbox/.hidden"
head -c 5000 "$work/price.txt" >"$inbox/slow file.txt"
touch -d 2001-01-01 "$inbox/slow file.txt"
{
    for i in $(seq 15); do
        sleep 0.2
        head -c $((5000 + 1000 * i)) "$work/price.txt" | tail -c 1000 >>"$inbox/slow file.txt"
        touch -d 2001-01-01 "$inbox/slow file.txt"
    done
    tail -c +20001 "$work/price.txt" >>"$inbox/slow file.txt"
    cp "$work/price.txt" "$inbox/second.txt"
} &
writer=$!
hotfolder "Smedhult verktyg" "$inbox" || fail "a good file is a failure"
wait $writer
hotfolder "Smedhult verktyg" "$inbox" || fail "a good file is a failure"
cmp -s "$work/price.txt" "$(only done 'slow file.txt')" || fail "half a file was read"
cmp -s "$work/price.txt" "$(only done second.txt)" || fail "the second file is another"
grep -q '"outcome": "done_with_remarks"' "$(only done second.txt.json)" || fail "no summary"
[ -s "$(only done second.txt.txt)" ] || fail "no messages"
[ -e "$inbox/.hidden" ] || fail "a hidden file was taken"
[ -z "$(ls "$inbox/failed")" ] || fail "something failed"

# A job that there is not, two at once: each file goes to failed, the script says so and does not stop at the first.
cp "$work/price.txt" "$inbox/one.txt"
cp "$work/price.txt" "$inbox/two.txt"
status=0
hotfolder "Finns ej" "$inbox" 2>"$work/errors" || status=$?
[ $status -eq 1 ] || fail "the unit does not see that a file failed"
[ "$(grep -c ' failed, see ' "$work/errors")" -eq 2 ] || fail "not told: $(cat "$work/errors")"
grep -q '"outcome": "stopped"' "$(only failed one.txt.json)" || fail "no summary of what failed"
only failed two.txt >/dev/null

# Another one has the folder.
cp "$work/price.txt" "$inbox/third.txt"
flock "$inbox/.lock" "$examples/kolmera-hotfolder" "Smedhult verktyg" "$inbox" || fail "a second one is a failure"
[ -e "$inbox/third.txt" ] || fail "two read one file"

# Stopped from outside while it waits for a file to settle: the file stays for the next time, and nothing lies about.
mkdir "$work/bin"
cat >"$work/bin/sleep" <<SLEEP
#!/bin/sh
touch "$work/asleep"
until [ -e "$work/awake" ]; do $(command -v sleep) 0.05; done
SLEEP
chmod +x "$work/bin/sleep"
PATH="$work/bin:$PATH" SETTLE=1000 "$examples/kolmera-hotfolder" "Smedhult verktyg" "$inbox" &
stopped=$!
until [ -e "$work/asleep" ]; do sleep 0.05; done
kill -TERM $stopped
touch "$work/awake"
status=0
wait $stopped || status=$?
[ $status -eq 143 ] || fail "stopped from outside, it ended with $status"
[ -e "$inbox/third.txt" ] || fail "a file is gone though nobody read it"
hotfolder "Smedhult verktyg" "$inbox" || fail "nobody reads what was left"
only done third.txt >/dev/null
[ -z "$(find "$KOLMERA_DATA" "$inbox" -name '.run.*')" ] || fail "temporary folders are left"
rm -r "$work"
echo "hot folder: done"
