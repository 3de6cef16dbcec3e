#!/usr/bin/env bash
# real_session.sh BIN ARTEFACTS: one session of the desktop program in a real window, with real keys and clicks: from a
# data folder without products, masks or jobs of its own to a finished import. Every step leaves a picture in ARTEFACTS.
set -euo pipefail
# Swedish numbers (everything but English), and window titles beyond ASCII.
export LC_ALL=C.UTF-8

bin=$(realpath "$1")
mkdir -p "$2"
pictures=$(realpath "$2")
rm -f "$pictures"/*.png
work=$(mktemp -d)
data=$work/data
seconds=30 # that a step may take; a loaded machine is slow, not wrong
server=
program=
window=
step=0

finish() {
    [ -z "$program" ] || kill "$program" 2>/dev/null || true
    [ -z "$server" ] || kill "$server" 2>/dev/null || true
    wait
    rm -rf "$work"
}
trap finish EXIT
trap 'exit 1' INT TERM HUP

fail() {
    echo "FAILED: $*" >&2
    echo "Windows on the screen:" >&2
    xdotool search --onlyvisible --name . 2>/dev/null | while read -r id; do
        printf '    "%s"\n' "$(xdotool getwindowname "$id" 2>/dev/null)" >&2
    done
    sed 's/^/kolmera: /' "$work/kolmera.log" >&2 2>/dev/null || true
    import -window root "$pictures/failed.png" 2>/dev/null && echo "The last picture: $pictures/failed.png" >&2
    exit 1
}

# wait_for COMMAND...: true as soon as the command is; false when the time is up.
wait_for() {
    local end=$((SECONDS + seconds))
    until "$@"; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.1
    done
}

# A title as a pattern for the whole of it.
exactly() { printf '^%s$' "${1//./\\.}"; }

find_window() {
    window=$(xdotool search --onlyvisible --name "$(exactly "$1")" 2>/dev/null | tail -1)
    [ -n "$window" ]
}

is_gone() { ! xdotool search --onlyvisible --name "$(exactly "$1")" >/dev/null 2>&1; }

# There is no window manager: the window on top gets the keys when it is asked for.
takes_keys() {
    xdotool windowfocus "$window" 2>/dev/null && [ "$(xdotool getwindowfocus 2>/dev/null)" = "$window" ]
}

# enter TITLE: goes on in the window with that title as soon as it is there.
enter() {
    wait_for find_window "$1" || fail "the window \"$1\" did not appear"
    wait_for takes_keys || fail "the window \"$1\" does not take the keys"
}

left() { wait_for is_gone "$1" || fail "the window \"$1\" did not close"; }

keys() { xdotool key --delay 20 "$@"; }

# press KEY TIMES
press() { [ "$2" -eq 0 ] || xdotool key --delay 10 --repeat "$2" --repeat-delay 10 "$1"; }

write() { xdotool type --delay 10 -- "$1"; }

# click LEFT TOP: a place in the window, in hundredths of its size.
click() {
    local geometry width height
    geometry=$(xdotool getwindowgeometry --shell "$window")
    width=$(sed -n 's/^WIDTH=//p' <<<"$geometry")
    height=$(sed -n 's/^HEIGHT=//p' <<<"$geometry")
    xdotool mousemove --window "$window" $((width * $1 / 100)) $((height * $2 / 100)) click 1
}

# picture NAME: the screen as soon as it stands still.
picture() {
    local file
    step=$((step + 1))
    file=$(printf '%s/%02d-%s.png' "$pictures" "$step" "$1")
    import -window root "$file"
    for _ in {1..10}; do
        import -window root "$work/again.png"
        cmp -s "$file" "$work/again.png" && return
        mv "$work/again.png" "$file"
    done
    echo "The screen never stood still at $file" >&2
}

# relate SOURCE TARGET RULE DIVISION: joins a field of the price file (from 1) to the target with that place in the list;
# the last two are places in the lists of rules (from 0).
relate() {
    keys alt+f Home
    press Down $(($1 - 1))
    keys alt+g Home
    press Down "$2"
    keys alt+m Home
    press Down "$3"
    keys Tab Home
    press Down "$4"
    # Not by Alt+R: a button pressed by its letter acts a moment later, after keys that follow at once.
    keys Tab space
}

sql() { sqlite3 -readonly "$data/FTG1.mdb" -cmd ".load $bin/svenska" "$1"; }

has_products() { [ "$(sql 'SELECT count(*) FROM Produkt' 2>/dev/null)" = "$1" ]; }

has_ended() { ! kill -0 "$program" 2>/dev/null; }

# expect WHAT WANTED FOUND
expect() { [ "$2" = "$3" ] || fail "$1"$'\n'"wanted: $2"$'\n'"found:  $3"; }

# field FILE OFFSET WIDTH: a field of a record file, without the blanks behind it.
field() { tail -c "+$(($2 + 1))" "$data/$1" | head -c "$3" | tr -d '\0' | sed 's/ *$//'; }

# --- the folders, the screen and the program
"$bin/kolmera-cli" new "$data" >/dev/null
mkdir -m 700 "$work/program" "$work/home"
cp "$bin/kolmera" "$bin/DVLang.sys" "$work/program/"
# The second record names the data folder, here seen from the program's folder.
printf '%-20s%-50s\r\n' '' '' DataMapp ../data >"$work/program/DVKlient.ini"
priceFile=$work/priser.txt
printf '%s\r\n' $'A100\tHammare\t149,50' $'A200\tSpik 75 mm\t0,35' $'B300\tS\xe5g f\xf6r tr\xe4\t1234,00' >"$priceFile"

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$work/display" 2>"$work/xvfb.log" &
server=$!
wait_for test -s "$work/display" || { cat "$work/xvfb.log" >&2; echo "FAILED: no screen" >&2; exit 1; }
DISPLAY=:$(<"$work/display")
export DISPLAY
env HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_RUNTIME_DIR="$work/home" QT_QPA_PLATFORM=xcb \
    "$work/program/kolmera" >"$work/kolmera.log" 2>&1 &
program=$!

mainTitle='Kolmera - Inläsning av prisfiler'
jobTitle='Ny inläsning'
maskTitle='Ny mask för prisfilen priser.txt'
runTitle='Utför : Grossisten'

enter "$mainTitle"
picture empty

# --- a job, and from there a mask for its price file
keys alt+n
enter "$jobTitle"
keys alt+n
write Grossisten
keys alt+f
write "$priceFile"
keys alt+t Home
picture job
keys alt+k Tab Tab Tab space
enter "$maskTitle"
keys alt+b alt+w alt+k
keys alt+n
write Varulista
picture mask
relate 1 1 0 0  # product number, always updated, search key
relate 2 6 0 0  # name
relate 3 21 0 0 # purchase price, not divided
picture relations
click 83 97 # the button that saves
left "$maskTitle"
enter "$jobTitle"
picture job-with-mask
keys alt+s
left "$jobTitle"
enter "$mainTitle"
picture job-list

# --- the run
click 30 70 # below the rows of the list, which gets the keys
keys Home End
keys alt+u
enter "$runTitle"
picture confirm
keys alt+u
left "$runTitle"
wait_for has_products 3 || fail "the run did not make three products"
enter "$mainTitle"
picture after-run
keys alt+a
wait_for has_ended || fail "the program did not end"
wait "$program" || fail "the program ended with $?"
program=

# --- what is on the disk
expect 'the products' $'A100|Hammare|149.5\nA200|Spik 75 mm|0.35\nB300|Såg för trä|1234.0' \
    "$(sql 'SELECT Nummer, Benämning, Inpris FROM Produkt ORDER BY Nummer')"
expect 'the number of jobs' $((4 * 534)) "$(stat -c %s "$data/KOLMERA.TXT")"
job=$((3 * 534))
expect 'the name of the job' Grossisten "$(field KOLMERA.TXT $job 100)"
expect 'the price file of the job' "$priceFile" "$(field KOLMERA.TXT $((job + 100)) 100)"
expect 'the mask of the job' Varulista "$(field KOLMERA.TXT $((job + 200)) 100)"
company=$(field KOLMERA.TXT $((job + 300)) 12)
expect 'the company of the job' FTG1.MDB "${company^^}"
expect 'the kind of the job' '' "$(field KOLMERA.TXT $((job + 432)) 1)"
expect 'the number of masks' 614 "$(stat -c %s "$data/PRISMASK.TXT")"
expect 'the name of the mask' Varulista "$(field PRISMASK.TXT 0 100)"
# Tab-separated, Windows, creates products, updates no supplier, with the boxes as they were, and three columns.
expect 'the settings of the mask' 'TNJN10  100 3' "$(field PRISMASK.TXT 100 16)"
expect 'the relations of the mask' $'00100100100000000US1\n00100200600000000UI1\n00100302100000000UI1' \
    "$(tr -d '\0\r' <"$data/PRISMPOS.TXT")"
echo "The import came through; its pictures are in $pictures"
