# What ./dev demo shows behind the first invoices: a package, what became of it, purchases, an invoice issued offline.
# Sourced by tools/demo.sh, which has $demo, $sources, $bin, $door, $nip and $token.

# Both doors read settings anew with each call.
use_profile() { # classic|current
    if [[ $door == native ]]; then
        write_settings "$demo/Tavrix.json" "$demo/ca.pem" "$1"
    else
        write_settings "$demo/dll/Tavrix.json" "Z:$demo/ca.pem" "$1"
    fi
}

tavrix() { TAVRIX_SETTINGS=$demo/Tavrix.json TAVRIX_TOKEN=$token "$bin/tavrix" "$@"; }

call_through_com() { # method [argument...]
    run_script_host call_ksef.vbs "Z:$demo/firma.db" "$nip" "$token" "$@" >"$demo/call.txt"
    grep -q '^KONIEC' "$demo/call.txt" || fail "$1 did not reach its end"
    sed -n '/^KONIEC/!p' "$demo/call.txt" | cut -c1-160
}

query() { sqlite3 "$demo/firma.db" "$@"; }
expect() { # SQL text
    [[ $(query "$1") == "$2" ]] || fail "'$1' gives '$(query "$1")' instead of '$2'"
}

steer() { curl -sS --fail --noproxy '*' --cacert "$demo/ca.pem" "$origin/sandbox/$1" "${@:2}"; }
# One member of an entry in a list of the sandbox's state, the entry told by another member's value.
state_of() { # list member other value
    steer state >"$demo/state.json"
    sqlite3 :memory: "select value ->> '$2' from json_each(cast(readfile('$demo/state.json') as text), '\$.$1')
        where value ->> '$3' = '$4'"
}

write_invoice() { # number file: the first invoice under another number
    sed -E "s#<P_2>[^<]*#<P_2>$1#" "$demo/faktura.xml" >"$2"
}

show_package_rows() {
    query -header -column "select ddout_numer, coalesce(numer_ksef, '(none)') as numer_ksef, status_ksef,
        Export_Opis_bledu_ksef as note from dok_fak where ddout_id between 1003 and 1005"
}

send_package() {
    local id number
    # Of a package nobody asks invoice by invoice: time alone has to move them on. Logging in has been seen to wait by now.
    steer pace --data '{"authentication": {"polls": 0}, "invoice": {"polls": 0, "delay_ms": 200}}' >"$demo/pace.json"
    mkdir "$demo/paczka"
    while IFS='|' read -r id number; do
        write_invoice "$number" "$demo/paczka/dok_fak-$id.xml"
    done < <(query "select ddout_id, ddout_numer from dok_fak where ddout_id between 1003 and 1005")
    "$bin/tavrix" pack "$demo/paczka" "$demo/paczka.zip" | sed "s#$root/##"
    if [[ $door == native ]]; then
        tavrix batch "$demo/paczka.zip"
    else
        call_through_com SendBach "Z:$demo/paczka.zip"
    fi
    wait_for_package
}

wait_for_package() {
    for _ in $(seq 100); do
        [[ $(state_of sessions stage type Batch) != finished ]] || return 0
        sleep 0.1
    done
    fail "the package is not done"
}

reconcile() {
    if [[ $door == native ]]; then tavrix reconcile --db "$demo/firma.db"; else call_through_com GetUpo; fi
    show_package_rows
}

reconcile_by_position() {
    local number=FV/2026/11/0148 reference
    # By position a document is found by the number of the session's first invoice and the reference that KSeF gave this
    # invoice within the session. Nobody knows that before the package is closed: the host takes it from the session's list.
    reference=$(state_of invoices referenceNumber invoiceNumber "$number")
    query "update dok_fak set NumerRef_ksef = '$reference' where ddout_numer = '$number'"
    reconcile
    expect "select status_ksef, Export_Opis_bledu_ksef, numer_ksef <> '' from dok_fak where ddout_id = 1003" "201|OK.|1"
    expect "select count(numer_ksef) from dok_fak where ddout_id between 1003 and 1005" 1
}

reconcile_by_name() {
    local hash
    # One document by its invoice's hash, the last one by what the package's manifest says of its file.
    hash=$("$bin/tavrix" hash "$demo/paczka/dok_fak-1004.xml" | cut -d' ' -f1)
    query "update dok_fak set HashFaktury = '$hash' where ddout_id = 1004"
    reconcile
    expect "select count(*) from dok_fak where ddout_id between 1003 and 1005 and status_ksef = '201' and numer_ksef <> ''" 3
}

fetch_purchases() {
    local seller
    for seller in 7352765225 8567346215; do
        steer purchases --data "{\"buyer\": \"$nip\", \"seller\": \"$seller\"}" >"$demo/purchases-$seller.json"
    done
    if [[ $door == native ]]; then tavrix pull --nip "$nip" --db "$demo/firma.db"; else call_through_com GetFaktury; fi
    query -header -column "select ksefNumber, In_nip, coalesce(konh_nazwa, '(unknown)') as contractor, In_NEtto,
        length(dane) as xml_characters, coalesce(User_ids_do_podpisu, '') as approvers
        from DOK_ZDJECIA left join kontrahenci on konh_id = In_Konh_id order by countt"
    expect "select count(*) from DOK_ZDJECIA where length(dane) > 0" 2
    expect "select group_concat(user_id) from (select user_id from dok_zdjecia_podpisy order by user_id)" 7,12
}

# The certificate is of the company's own making; the sandbox is told to take it for one of KSeF's.
make_certificate() {
    openssl ecparam -name prime256v1 -genkey -noout -out "$demo/offline.key"
    openssl req -x509 -new -key "$demo/offline.key" -days 30 -set_serial "0x$serial" -utf8 \
        -subj "/CN=Żuraw offline/organizationIdentifier=VATPL-$nip" -out "$demo/offline.pem" 2>"$demo/openssl.log"
    sqlite3 :memory: "select json_object('certificate', cast(readfile('$demo/offline.pem') as text), 'type', 'Offline')" |
        steer certificates --data @- >"$demo/certificate.json"
}

# The link's signature is r and s, 32 bytes each; openssl reads them as DER.
check_link() { # link
    python3 - "$1" "$demo/link.txt" "$demo/link.der" <<'PYTHON'
import base64, sys
link, text_file, signature_file = sys.argv[1:]
text, signature = link.removeprefix("https://").rsplit("/", 1)
raw = base64.urlsafe_b64decode(signature + "=" * (-len(signature) % 4))
def der(tag, content): return bytes([tag, len(content)]) + content
def integer(number): return der(2, number.to_bytes(number.bit_length() // 8 + 1, "big"))
halves = [int.from_bytes(raw[at:at + 32], "big") for at in (0, 32)]
open(text_file, "w").write(text)
open(signature_file, "wb").write(der(0x30, b"".join(map(integer, halves))))
PYTHON
    openssl x509 -in "$demo/offline.pem" -pubkey -noout >"$demo/offline.pub"
    openssl dgst -sha256 -verify "$demo/offline.pub" -signature "$demo/link.der" "$demo/link.txt" >"$demo/verified.txt" ||
        fail "openssl does not verify the link"
    say "openssl, with the certificate's key: $(cat "$demo/verified.txt")"
}

issue_offline() {
    local serial=01F20A5D352AE590 invoice=$demo/offline.xml link hash
    make_certificate
    write_invoice FV/2026/11/0151 "$invoice"
    if [[ $door == native ]]; then
        link=$(tavrix certlink --nip "$nip" --serial "$serial" --key "$demo/offline.key" --xml "$invoice")
    else
        hash=$("$bin/tavrix" hash "$invoice" | cut -d' ' -f1)
        query "update dok_fak set HashFaktury = '$hash' where ddout_id = 1006" \
            "insert into uzytkownicy_setup values (7, 'usp607', cast(readfile('$demo/offline.key') as text))"
        call_through_com GetQr2 "$serial" dok_fak 1006 >"$demo/qr2.txt"
        link=$(query "select coalesce(ksef_qrcode2, '') from dok_fak where ddout_id = 1006")
        [[ -n $link ]] || fail "no link in the row: $(cat "$demo/qr2.txt")"
    fi
    say "$link"
    check_link "$link"
    "$bin/tavrix" qr --text "$link" --caption CERTYFIKAT --out "$demo/offline-qr.png"
    say "QR label: build/demo/offline-qr.png"
    check_label "$demo/offline-qr.png" "$link"
}
