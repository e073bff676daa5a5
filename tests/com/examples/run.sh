#!/usr/bin/env bash
# run.sh WINDOWS_BIN SANDBOX: the examples that a host of this machine can run: the script host's under Wine, Python's natively beside SANDBOX's tavrix.
# Each sends a document of its own to a sandbox; sent again it says the number that the document has.
set -euo pipefail

windows_bin=$1 sandbox=$2
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
export TAVRIX=${sandbox%-sandbox}
[[ -x $sandbox && -x $TAVRIX ]] || {
    echo "SKIPPED: $sandbox or tavrix is not built; ./dev build native builds them"
    exit 77
}
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT

start_sandbox "$sandbox" "$work"
register_dlls 32 "$windows_bin" "$work"
write_settings "$work/Tavrix.json"
export TAVRIX_SETTINGS=$work/Tavrix.json
make_host_database "$work/firma.db"
# One with the mark that an editor may put before it, one without.
printf '\xef\xbb\xbfR|nip-5265877635|s\r\n' >"$work/marked.txt"
echo 'R|nip-5265877635|s' >"$work/token.txt"
column() { sqlite3 "$work/firma.db" "select coalesce($1, '') from dok_fak where ddout_id = $2"; }

# expect STATUS TEXT command...: the command's status and what it says, without the sentinel of scripts.
expect() {
    local status=0 said
    said=$("${@:3}") || status=$?
    said=$(tr -d '\r' <<<"$said" | grep -v '^KONIEC$')
    [[ $status == "$1" && $said == $2 ]] || {
        printf 'expected %s "%s", got %s "%s"\n' "$1" "$2" "$status" "$said"
        exit 1
    }
}
# In the console's code page.
script() { wine_program 32 cscript //nologo "Z:$root/examples/$1" "${@:2}" | iconv -f CP852 -t UTF-8; }

id=1000
for example in vbscript/wyslij_fakture.vbs jscript/wyslij_fakture.js python/wyslij_fakture.py; do
    id=$((id + 1))
    sed "s#<P_2>#<P_2>$id/#; s#<P_1>[^<]*#<P_1>$(date +%F)#" "$root/demo/faktura.xml" >"$work/$id.xml"
    sqlite3 "$work/firma.db" "insert or ignore into dok_fak (ddout_id, ddout_data_wyst) values ($id, date('now'))"
    run=(script "$example" "Data Source=Z:$work/firma.db") drive=Z: environment=2
    [[ $example != python/* ]] || run=(python3 "$root/examples/$example" "$work/firma.db") drive= environment=test
    wrong=("${run[@]}" 1234567890 "$drive$work/marked.txt" "$drive$work/$id.xml" dok_fak "$id" "$environment")
    right=("${run[@]}" 5265877635 "$drive$work/token.txt" "$drive$work/$id.xml" dok_fak "$id" "$environment")
    expect 1 $'wynik: *5265877635*numer_ksef: ' "${wrong[@]}"
    expect 0 $'wynik: \nnumer_ksef: 5265877635-*' "${right[@]}"
    [[ -n $(column UPO_ksef "$id") ]]
    [[ $example == python/* ]] || expect 0 "Dokument ma juz numer: $(column numer_ksef "$id")" "${right[@]}"
done
expect 3 'Plik faktury: *' script vbscript/wyslij_fakture.vbs "Data Source=Z:$work/firma.db" 5265877635 "Z:$work/token.txt" "Z:$work/none.xml" dok_fak 1001 2
expect 1 'Nie wyslano: *' script vbscript/wyslij_poczte.vbs 127.0.0.1 1 0 - - jan@firma.example ola@firma.example Faktura "Z:$work/1001.xml"
python3 "$root/examples/python/etykieta.py" 590123412345 "$work/kod.png"
[[ $(zbarimg -q --raw "$work/kod.png" 2>/dev/null) == 5901234123457 ]]
