#!/usr/bin/env bash
# manpages.sh KOLMERA-CLI FOLDER VERSION: manual pages of both programs and of every command, made of what --help says,
# in English (man1) and Swedish (sv/man1).
set -euo pipefail
program=$1
folder=$2
version=$3
settings=$(mktemp -d)
trap 'rm -rf "$settings"' EXIT
mkdir "$settings/Dorvik"
rm -rf "$folder"

help() { XDG_CONFIG_HOME=$settings "$program" "$@" --help; }
# The names in the list of commands: the last group of the help.
commands() { help "$@" | awk -v heading="$commands:" '$0 == heading { on = 1; next } on && /^  [a-z]/ { print $1 }'; }

# page NAME [COMMAND ...]: the first line is the purpose, then the usage, then groups of options.
page() {
    local name=$1
    shift
    help "$@" | awk -v name="$name" -v upper="${name^^}" -v version="$version" -v language="$language" '
        function quoted(text) { gsub(/\\/, "\\e", text); gsub(/-/, "\\-", text); if (text ~ /^[.\x27]/) text = "\\\\&" text; return text }
        BEGIN { swedish = language == "SE"
                printf ".TH %s 1 \"\" \"Kolmera %s\" \"Kolmera\"\n.SH %s\n", quoted(upper), version, swedish ? "NAMN" : "NAME" }
        NR == 1 { sub(/\.$/, ""); printf "%s \\- %s\n", quoted(name), quoted($0); next }
        NR == 2 { sub(/^[^:]*: /, ""); printf ".SH %s\n.B %s\n", swedish ? "SYNOPSIS" : "SYNOPSIS", quoted($0); next }
        /^$/ { next }
        /^[^ ].*:$/ { sub(/:$/, ""); printf ".SH %s\n", toupper(quoted($0)); next }
        /^  [^ ]/ { match($0, /   +/)
                    if (RSTART > 2 && RLENGTH > 0) printf ".TP\n.B %s\n%s\n", quoted(substr($0, 3, RSTART - 3)), quoted(substr($0, RSTART + RLENGTH))
                    else printf ".TP\n.B %s\n", quoted(substr($0, 3))
                    next }
        { sub(/^ +/, ""); print quoted($0) }
        END { if (swedish) print ".SH SLUTKOD\n0 klart, 1 stoppad av ett meddelande, 2 fel på kommandoraden, 3 klart men något togs inte som det står,\n130 avbruten.\n.SH SE ÄVEN\n.BR kolmera\\-cli (1),\nhandboken i paketet kolmera\\-doc."
              else print ".SH EXIT STATUS\n0 done, 1 stopped by a message, 2 wrong command line, 3 done but something was not taken as it stands,\n130 cancelled.\n.SH SEE ALSO\n.BR kolmera\\-cli (1),\nthe guide in the package kolmera\\-doc." }' |
        gzip -9 -n >"$target/$name.1.gz"
}

for language in EN SE; do
    printf '[Start]\nLang=%s\n' "$language" >"$settings/Dorvik/settings.ini"
    [ $language = EN ] && place=man1 commands=Commands || { place=sv/man1; commands=Kommandon; }
    target=$folder/cli/$place
    mkdir -p "$target" "$folder/window/$place"
    page kolmera-cli
    for command in $(commands); do
        page "kolmera-cli-$command" "$command"
        for part in $(commands "$command"); do page "kolmera-cli-$command-$part" "$command" "$part"; done
    done
done

window() {
    printf '%s\n' "$@" | gzip -9 -n >"$folder/window/$place/kolmera.1.gz"
}
place=man1
window ".TH KOLMERA 1 \"\" \"Kolmera $version\" Kolmera" '.SH NAME' "kolmera \\- bring suppliers' price files into the product register" \
    '.SH SYNOPSIS' '.B kolmera' '[\fIFOLDER\fR | \fB\-\-demo\fR]' '.SH DESCRIPTION' \
    'The desktop program: a list of import jobs, the editor of field masks, discount letters, and the run.' \
    'F1 opens the guide. It works on the data folder FOLDER, or on an example company with \-\-demo; else on the folder that' \
    'DVKlient.ini beside the program names, or that was open last; when there is none, it asks.' '.SH SEE ALSO' '.BR kolmera\-cli (1)'
place=sv/man1
window ".TH KOLMERA 1 \"\" \"Kolmera $version\" Kolmera" '.SH NAMN' 'kolmera \- läs in leverantörernas prisfiler i produktregistret' \
    '.SH SYNOPSIS' '.B kolmera' '[\fIMAPP\fR | \fB\-\-demo\fR]' '.SH BESKRIVNING' \
    'Skrivbordsprogrammet: listan över inläsningar, fältmaskerna, rabattbreven och själva inläsningen.' \
    'F1 öppnar handboken. Det arbetar i datamappen MAPP, eller med ett exempelföretag med \-\-demo; annars i den mapp som' \
    'DVKlient.ini bredvid programmet anger, eller som var öppen senast; finns ingen frågar det.' '.SH SE ÄVEN' '.BR kolmera\-cli (1)'
