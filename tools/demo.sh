#!/usr/bin/env bash
# ./dev demo: a host sends invoices to the sandbox and fetches some. With --native the host is tavrix, otherwise Wine's script
# host with scripts that any Windows program could be. What comes out stays in build/demo.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
bin=$root/build/native/bin
demo=$root/build/demo
sources=$root/demo
# The published schemas, where the machine has them: the sandbox then checks invoices fully.
schemas=${TAVRIX_KSEF_SCHEMAS:-$root/../shared/ksef/xsd}

door=com
[[ " $* " == *" --native "* ]] && door=native

nip=5265877635
token="20261121-EC-226A0B5000-30A1F3A6C5-41|nip-$nip|6f1d5a0c9b7e4823a1d4c3b2e5f60718293a4b5c6d7e8f901a2b3c4d5e6f7081"

say() { printf '%s\n' "$*"; }
title() { printf '\n== %s ==\n' "$*"; }
fail() {
    printf 'demo: %s\n' "$*" >&2
    exit 1
}
# shellcheck source=tools/demo_next.sh
source "$root/tools/demo_next.sh"
trap leave_host EXIT

start_ksef() {
    # The classic order of lists, which hosts that reconcile by position were written for.
    local arguments=(--https --ca-file-out "$demo/ca.pem" --data "$demo/ksef" --auth-polls 1 --invoice-polls 1
        --wire-order classic)
    [[ ! -d $schemas ]] || arguments+=(--schemas "$schemas")
    start_sandbox "$bin/tavrix-sandbox" "$demo" "${arguments[@]}" || fail "no KSeF to send to"
    say "KSeF of this computer: $origin (web page there; TLS certificate of its own authority)"
}

# Invoices are dated today, as a host's would be.
prepare_documents() {
    make_host_database "$demo/firma.db"
    sqlite3 "$demo/firma.db" <"$sources/next_documents.sql"
    local today name
    today=$(date +%F)
    for name in faktura korekta; do
        sed -E "s#<P_1>[^<]*#<P_1>$today#; s#<DataWytworzeniaFa>[^T]*#<DataWytworzeniaFa>$today#" \
            "$sources/$name.xml" >"$demo/$name.xml"
    done
    say "host database: build/demo/firma.db; invoice $(sed -nE 's#.*<P_2>(.*)</P_2>.*#\1#p' "$demo/faktura.xml"), correction $(sed -nE 's#.*<P_2>(.*)</P_2>.*#\1#p' "$demo/korekta.xml")"
}

column() { sqlite3 "$demo/firma.db" "select coalesce($2, '') from $1 where ddout_id = $3"; }

send_natively() { # table id invoice
    say "row before: $(sqlite3 "$demo/firma.db" "select ddout_id, ddout_numer, coalesce(numer_ksef, '(none)') from $1 where ddout_id = $2")"
    tavrix send --nip "$nip" --env test \
        --xml "$demo/$3.xml" --db "$demo/firma.db" --table "$1" --id "$2"
}

# Whatever status it ends with; the caller looks at what it printed. The script host writes the console's code page.
run_script_host() { # script [argument...]
    { wine_program 32 cscript //nologo "Z:$sources/$1" "${@:2}" || true; } | tr -d '\r' | iconv -f CP852 -t UTF-8
}

send_through_com() { # table id invoice
    run_script_host send_invoice.vbs "Z:$demo/firma.db" "$nip" "$token" "Z:$demo/$3.xml" "$1" "$2" 2 >"$demo/$3.txt"
    sed -E 's/^/  /' "$demo/$3.txt" | cut -c1-160
    grep -q '^KONIEC' "$demo/$3.txt" || fail "the script did not reach its end"
}

check_document() { # table id
    local number
    number=$(column "$1" numer_ksef "$2")
    [[ -n $number && $(column "$1" status_ksef "$2") == 200 ]] || fail "the row of $1 has no KSeF number"
    column "$1" UPO_ksef "$2" >"$demo/upo-$2.xml"
    grep -q "<NumerKSeFDokumentu>$number<" "$demo/upo-$2.xml" || fail "the UPO does not name $number"
}

write_views() { # table id invoice
    local number hash link
    number=$(column "$1" numer_ksef "$2")
    hash=$(column "$1" HashFaktury "$2" | tr '+/' '-_' | tr -d '=')
    link=https://qr-test.ksef.mf.gov.pl/invoice/$nip/$(date +%d-%m-%Y)/$hash
    "$bin/tavrix" qr --text "$link" --caption "$number" --out "$demo/$3-qr.png"
    "$bin/tavrix" qr --text "$link" --caption "$number" --out "$demo/$3-qr.svg"
    "$bin/tavrix" render "$demo/$3.xml" --xsl "$root/stylesheets/faktura-fa3.xsl" -o "$demo/$3.html" \
        --param ksef_number="$number" --param verification_link="$link" --param qr_image="$3-qr.svg"
    say "page: build/demo/$3.html; QR label: build/demo/$3-qr.png and .svg ($link)"
    check_label "$demo/$3-qr.png" "$link"
}

check_label() { # picture text
    command -v zbarimg >/dev/null || return 0
    [[ $(zbarimg -q --raw "$1" 2>/dev/null) == "$2" ]] || fail "zbarimg does not read the label"
    say "zbarimg reads the label back"
}

rm -rf "$demo"
mkdir -p "$demo"
title "A company and a KSeF of its own"
start_ksef
prepare_documents
if [[ $door == com ]]; then
    register_dlls 32 "$root/build/win32/bin" "$demo/dll" || fail "the DLLs could not be registered"
    write_settings "$demo/dll/Tavrix.json" "Z:$demo/ca.pem"
    say "registered Tavrix.dll, and a development ADO provider because Wine has none"
fi
use_profile classic

title "The invoice"
if [[ $door == native ]]; then send_natively dok_fak 1001 faktura; else send_through_com dok_fak 1001 faktura; fi
check_document dok_fak 1001
title "Its correction"
if [[ $door == native ]]; then send_natively dok_KFA 2001 korekta; else send_through_com dok_KFA 2001 korekta; fi
check_document dok_KFA 2001

title "The receipt of acceptance (UPO) in the row"
cat "$demo/upo-1001.xml"
echo
title "For people"
write_views dok_fak 1001 faktura
write_views dok_KFA 2001 korekta

title "A package of three invoices"
send_package
title "What became of it, by position (profile classic): the one row with the session's number and the invoice's reference"
reconcile_by_position
title "What became of it, by name (profile current): every row, by hash or manifest"
use_profile current
reconcile_by_name
title "Purchase invoices: one seller is a contractor, and two users have to approve what comes from there"
fetch_purchases
title "An invoice issued offline: the link that proves its issuer"
issue_offline
title "Done"
say "5 invoices accepted, 5 rows written, 2 UPOs stored, 2 purchases fetched, 1 offline link verified (invoices: $door door)"
