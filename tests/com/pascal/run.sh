#!/usr/bin/env bash
# run.sh WINDOWS_BIN SANDBOX: a Pascal host, compiled by what $TAVRIX_PASCAL holds. Its unit is imported from the type library by somebody else's importer,
# somebody else's compiler binds against it; then the example for Delphi sends an invoice to a sandbox.
set -euo pipefail

compiler=${TAVRIX_PASCAL:-a Free Pascal for Windows} windows_bin=$1 sandbox=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../../.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
for needed in "$compiler/ppcross386" "$sandbox"; do
    [[ -x $needed ]] || {
        echo "SKIPPED: $needed is not there; ./dev test win32 makes it where Debian's packages can be had"
        exit 77
    }
done
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT

wine_program 32 "$compiler/import_library.exe" "Z:$windows_bin/Tavrix.tlb" "Z:$work/Tavrix_TLB.pas"
python3 "$root/tools/pascal/tidy_import.py" "$work/Tavrix_TLB.pas"
compile() { "$compiler/ppcross386" -n -Twin32 -v0 -Fu"$compiler/units" -Fu"$work" -FU"$work" -FE"$work" "$1"; }
compile "$here/host.pas"
compile "$root/examples/delphi/SendInvoice.dpr"

start_sandbox "$sandbox" "$work"
register_dlls 32 "$windows_bin" "$work"
write_settings "$work/Tavrix.json"
wine_program 32 "$work/host.exe" "${origin##*:}" | tr -d '\r' | tee "$work/host.txt"
[[ $(cat "$work/host.txt") == KONIEC ]]

make_host_database "$work/firma.db"
# With the mark that an editor may put before it.
printf '\xef\xbb\xbfR|nip-5265877635|s\r\n' >"$work/token.txt"
send() {
    wine_program 32 "$work/SendInvoice.exe" "Data Source=Z:$work/firma.db" 5265877635 "Z:$work/token.txt" \
        "Z:$root/demo/faktura.xml" dok_fak 1001 2 | tr -d '\r'
}
send | tee "$work/send.txt"
number=$(sqlite3 "$work/firma.db" "select numer_ksef from dok_fak where ddout_id = 1001")
[[ -n $number && $(cat "$work/send.txt") == "numer_ksef: $number" ]]
[[ $(send) == "Dokument ma juz numer: $number" ]]
