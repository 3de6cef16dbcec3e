# What the benches on database servers share; to be sourced from the project's folder. The servers are the tests' own, on
# loopback, but sync as they do by default; KOLMERA_SAFE=0: they do not.
work=$(mktemp -d "${TMPDIR:-/tmp}/kolmera-server-bench.XXXXXX")
server=$PWD/tests/servers/server
kinds="postgresql mariadb"
stop() {
    for kind in $kinds; do "$server" stop "$kind" "$work/$kind"; done
    rm -rf "$work"
}
trap stop EXIT
setting() { sed -n "s/^$1 = //p" "$ODBCINI"; }
now() { date +%s.%N; }

psql_on() { PGPASSWORD=$(setting Password) psql -w -qAtX -v ON_ERROR_STOP=1 -h 127.0.0.1 -p "$(setting Port)" -U kolmera -d "$1" "${@:2}"; }
mariadb_on() { "$1" --no-defaults --protocol=tcp -h 127.0.0.1 -P "$(setting PORT)" -ukolmera -p"$(setting PWD)" "${@:2}"; }
fresh_postgresql() {
    psql_on postgres -c "SET client_min_messages = error" -c "DROP DATABASE IF EXISTS work" -c "CREATE DATABASE work TEMPLATE kolmera" >/dev/null
    psql_on work -c CHECKPOINT
}
fresh_mariadb() {
    mariadb_on mariadb -e "DROP DATABASE IF EXISTS work; CREATE DATABASE work CHARACTER SET utf8mb4"
    mariadb_on mariadb work <"$work/mariadb.sql"
}
ready_postgresql() {
    psql_on kolmera -c "VACUUM ANALYZE" # as the server of a company would have done
    [ "${KOLMERA_SAFE:-1}" = 0 ] || for name in fsync full_page_writes synchronous_commit; do
        psql_on postgres -c "ALTER SYSTEM SET $name = on" -c "SELECT pg_reload_conf()" >/dev/null
    done
}
ready_mariadb() {
    mariadb_on mariadb-dump kolmera >"$work/mariadb.sql"
    [ "${KOLMERA_SAFE:-1}" = 0 ] || mariadb_on mariadb -e "SET GLOBAL innodb_flush_log_at_trx_commit = 1"
}
# All rows that a job writes, in the order of their IDs.
rows_postgresql() { psql_on work -c "SELECT t.* FROM \"$1\" t ORDER BY \"ID\""; }
rows_mariadb() { mariadb_on mariadb work -N -e "SELECT t.* FROM $1 t ORDER BY ID"; }
rows() { for table in Produkt Levprislista Prodaltprodnr; do "rows_$1" "$table"; done | md5sum; }

# Starts a server with a company of bench_data: kind, format, records. The job's company is SQL;WORK afterwards, a copy to be
# made by fresh_KIND; `add_work PORT` says how it is reached.
start_company() {
    local kind=$1 format=$2 records=$3
    "$server" start "$kind" "$work/$kind" "$bin/kolmera-cli" $$
    export ODBCINI=$work/$kind/odbc.ini
    data=$work/data-$kind
    rm -rf "$data"
    "$bin/bench_data" "$format" "$data" --products "$records" --records "$records" >/dev/null
    "$bin/kolmera-cli" add-server "SQL;MAST" --connect "DSN=$kind;Database=kolmera" --data "$data" >/dev/null
    "$bin/kolmera-cli" copy-company FTG1.mdb "SQL;MAST" --data "$data" >/dev/null
    "ready_$kind"
    sed -i 's/FTG1\.mdb/SQL;WORK/' "$data/KOLMERA.TXT"
    port=$(sed -n 's/^P[Oo][Rr][Tt] = //p' "$ODBCINI")
}
stop_company() { "$server" stop "$1" "$work/$1"; }
add_work() {
    rm -f "$data/DVSQLSvr.ini"
    "$bin/kolmera-cli" add-server "SQL;WORK" --connect "DSN=$1;Database=work;Port=$2" --data "$data" >/dev/null
}
job_of() { case $1 in T) echo Tabbfil ;; F) echo Radfil ;; P) echo Postfil ;; *) echo "($1)" ;; esac; }
# Wall time of a command in seconds; its output goes to a file. Exit code 3: some records had no price.
seconds() {
    local start end
    start=$(now)
    "$@" >"$work/out" 2>&1 || [ $? -eq 3 ] || { cat "$work/out" >&2; exit 1; }
    end=$(now)
    echo "$start $end" | awk '{printf "%.3f", $2 - $1}'
}
# How often a command waits for its server: sends that an answer follows, however many pieces they have.
trips() {
    strace -f -e trace=sendto,send,recvfrom,recv -o "$work/trace" "$@" >/dev/null 2>&1 || true
    awk '/ (sendto|send)\(/ {sent = 1} /(recvfrom|recv)\(.*= [1-9]/ && sent {++n; sent = 0} END {print n + 0}' "$work/trace"
}
# The most memory that a command has held, in KiB.
peak() {
    local pid held most=0
    "$@" >/dev/null 2>&1 &
    pid=$!
    while held=$(sed -n 's/^VmHWM:[[:space:]]*\([0-9]*\).*/\1/p' "/proc/$pid/status" 2>/dev/null) && [ -n "$held" ]; do
        most=$held
        sleep 0.05
    done
    wait $pid || true
    echo "$most"
}
