#!/usr/bin/env bash
# run.sh WINDOWS_BIN SANDBOX: tavrix.exe works with a sandbox, in a folder with blanks and Polish letters. The sandbox is
# tavrix-sandbox.exe where it is built, otherwise SANDBOX.
set -euo pipefail

windows_bin=$1 sandbox=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
[[ -x $sandbox || -x $windows_bin/tavrix-sandbox.exe ]] || {
    echo "SKIPPED: $sandbox is not built; ./dev build native builds it"
    exit 77
}
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT
fail() {
    echo "FAILED: $*"
    exit 1
}

# expect STATUS TEXT argument...: tavrix.exe, or another $program, ends so, and says TEXT among the rest.
expect() {
    local status=0 wanted=$1 text=$2
    shift 2
    "$root/tools/wine-run" 64 "$windows_bin/${program:-tavrix}.exe" "$@" >"$work/said" 2>&1 || status=$?
    [[ $status == "$wanted" ]] || fail "status $status of: $* ($(cat "$work/said"))"
    [[ -z $text ]] || grep -qF -- "$text" "$work/said" || fail "no '$text' from: $* ($(cat "$work/said"))"
}

folder="$work/Faktury żółć i ąę"
mkdir "$folder"
start_own_sandbox() { start_sandbox "$sandbox" "$work"; }
if [[ -x $windows_bin/tavrix-sandbox.exe ]]; then
    # Called by start_sandbox.
    windows_sandbox() { exec "$root/tools/wine-run" 64 "$windows_bin/tavrix-sandbox.exe" "$@"; }
    start_own_sandbox() { start_sandbox windows_sandbox "$work" --data "Z:$folder/dane ó/"; }
    program=tavrix-sandbox expect 0 'tavrix-sandbox 10.' --version
fi
start_own_sandbox
# Keys lie there; the end of the name is how a shell completes it.
[[ ! -d "$folder/dane ó" || $(stat -c %A "$folder/dane ó") == *--- ]] || fail "anybody may read the sandbox's data"
write_settings "$folder/Ustawienia ś.json"
make_host_database "$folder/baza ł.db"
cp "$root/demo/faktura.xml" "$folder/faktura ź.xml"
cp "$root/demo/korekta.xml" "$folder/korekta.xml"
printf 'R|nip-5265877635|s\n' >"$folder/token.txt"
export TAVRIX_SETTINGS="Z:$folder/Ustawienia ś.json"
send=(send --nip 5265877635 --table dok_fak --token-file "Z:$folder/token.txt" --db)

expect 0 'tavrix 10.' --version
expect 2 --zła hash plik.xml --zła
expect 2 "nie ma pliku Z:$folder/brak ó.xsd" validate "Z:$folder/faktura ź.xml" --schema "Z:$folder/brak ó.xsd"
expect 0 "Faktura przyjęta, UPO zapisane w bazie." "${send[@]}" "Z:$folder/baza ł.db" --id 1001 --xml "Z:$folder/faktura ź.xml"
register_dlls 64 "$windows_bin" "$work/dll"
expect 0 "Faktura przyjęta" "${send[@]}" "Provider=SQLOLEDB;Data Source=Z:$folder/baza ł.db" --id 1002 --xml "Z:$folder/korekta.xml"
numbers=$(sqlite3 "$folder/baza ł.db" "select count(distinct numer_ksef) from dok_fak where UPO_ksef <> ''")
[[ $numbers == 2 ]] || fail "$numbers numbers in the database"

if [[ -x $windows_bin/tavrix-sandbox.exe ]]; then
    program=tavrix-sandbox expect 1 'the port may be taken' --port "${origin##*:}"
    # What is Ctrl+C to a Windows program; not to what started it.
    kill -INT "$(pgrep -f "^$windows_bin/tavrix-sandbox.exe .*$folder")"
    wait "$sandbox_pid" || fail "status $? of an interrupted sandbox"
    start_own_sandbox
    number=$(sqlite3 "$folder/baza ł.db" 'select numer_ksef from dok_fak where ddout_id = 1002')
    # Not a pipe: grep -q closes it at the first hit, and curl's failed write would count as a failure.
    curl -sf "$origin/faktury" -o "$work/faktury.html" || fail "the sandbox shows no page of invoices"
    grep -qF "$number" "$work/faktury.html" || fail "the sandbox has forgotten $number"
fi

cp "$root/stylesheets/faktura-fa3.xsl" "$folder/arkusz ć.xsl"
expect 0 '' render "Z:$folder/faktura ź.xml" --xsl "Z:$folder/arkusz ć.xsl" -o "Z:$folder/strona ę.html"
grep -q '<html' "$folder/strona ę.html" || fail "no page"
expect 0 '' qr --text 'zażółć' --out "Z:$folder/kod ń.png"
[[ $(zbarimg -q --raw "$folder/kod ń.png") == 'zażółć' ]] || fail "another QR code"
echo KONIEC
