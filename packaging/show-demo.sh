#!/usr/bin/env bash
# show-demo.sh BIN DEMO: runs every job of the demo and shows what it changed: some products before and after.
set -euo pipefail
export LC_ALL=sv_SE.UTF-8  # the demo's price files are Swedish; only the name counts, the locale need not exist
bin=$1
demo=$2

sql() { sqlite3 -readonly -header -column "$demo/FTG1.mdb" -cmd ".load $bin/svenska" "$@"; }

count() { sql -noheader "SELECT count(*) FROM Produkt"; }

"$bin/kolmera-cli" jobs --data "$demo"
while IFS= read -r job; do
    echo
    echo "== $job"
    before=$(mktemp)
    sql -noheader -separator '|' -list "SELECT Nummer, Benämning, Inpris, \"1Utpris\", \"2Utpris\", Prisändrdat FROM Produkt ORDER BY Nummer" >"$before"
    status=0
    "$bin/kolmera-cli" run "$job" --data "$demo" || status=$?
    [ "$status" -eq 0 ] || [ "$status" -eq 3 ] || exit "$status"
    echo
    echo "   a few of the products that changed (number|name|purchase price|level 1|level 2|price date):"
    sql -noheader -separator '|' -list "SELECT Nummer, Benämning, Inpris, \"1Utpris\", \"2Utpris\", Prisändrdat FROM Produkt ORDER BY Nummer" |
        diff "$before" - | grep '^[<>]' | sed 's/^</   before /; s/^>/   after  /' | head -n 8 || true
    rm -f "$before"
done < <("$bin/kolmera-cli" jobs --data "$demo" --json | sed -n 's/^ *"job": "\(.*\)",$/\1/p')
echo
echo "$(count) products in the demo company. Start again from the beginning: rm -r demo; ./run"
