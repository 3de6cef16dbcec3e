#!/usr/bin/env bash
# show-demo.sh BIN DEMO: runs every job of the demo and shows some of the products that it changed or made.
set -euo pipefail
bin=$1
demo=$2
before=$(mktemp -d)
trap 'rm -rf "$before"' EXIT

# The demo's price files are Swedish; only the locale's name counts, it need not exist on the machine.
kolmera() { LC_ALL=sv_SE.UTF-8 "$bin/kolmera-cli" "$@"; }

# Queries over the company as it is (main) and as it was before the job (old).
sql() {
    sqlite3 -readonly "$demo/FTG1.mdb" -cmd ".load $bin/svenska" -cmd "ATTACH '$before/FTG1.mdb' AS old" \
        -cmd '.mode column' -cmd '.headers on' "$1"
}

changed='SELECT n.Nummer, n.Benämning,
    printf("%.2f -> %.2f", o.Inpris, n.Inpris) AS "purchase price", printf("%.2f -> %.2f", o."1Utpris", n."1Utpris") AS "level 1",
    printf("%.2f -> %.2f", o."2Utpris", n."2Utpris") AS "level 2"
    FROM Produkt n JOIN old.Produkt o ON o.ID = n.ID WHERE n.Inpris <> o.Inpris OR n."1Utpris" <> o."1Utpris" ORDER BY n.Nummer LIMIT 5'
made='SELECT Nummer, Benämning, Inpris AS "new at", "1Utpris" AS "level 1", "2Utpris" AS "level 2", Leverantör
    FROM Produkt WHERE ID > (SELECT coalesce(max(ID), 0) FROM old.Produkt) ORDER BY Nummer LIMIT 3'

kolmera jobs --data "$demo"
while IFS= read -r job; do
    printf '\n== %s\n' "$job"
    cp "$demo/FTG1.mdb" "$before/FTG1.mdb"
    status=0
    kolmera run "$job" --data "$demo" || status=$?
    # 4: a limit of the job stopped it; what it would have done is shown.
    [ "$status" -ne 4 ] || { kolmera preview "$job" --data "$demo"; continue; }
    [ "$status" -eq 0 ] || [ "$status" -eq 3 ] || exit "$status"
    echo
    sql "$changed"
    sql "$made"
done < <(kolmera jobs --data "$demo" --json | sed -n 's/^ *"job": "\(.*\)",$/\1/p')

printf '\nThe demo company is in %s. To start again from the beginning: rm -r %s; ./run\n' "$demo/FTG1.mdb" "$demo"
