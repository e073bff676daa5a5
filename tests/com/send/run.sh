#!/usr/bin/env bash
# run.sh BITS WINDOWS_BIN SANDBOX: sends through the COM door of WINDOWS_BIN's DLL to a sandbox of its own, and judges what the
# script says.
set -euo pipefail

bits=$1 windows_bin=$2 sandbox=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../../.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
[[ -x $sandbox ]] || {
    echo "SKIPPED: $sandbox is not built; ./dev build native builds it"
    exit 77
}
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT

start_sandbox "$sandbox" "$work"
register_dlls "$bits" "$windows_bin" "$work"
write_settings "$work/Tavrix.json"
make_host_database "$work/firma.db"
wine_program "$bits" cscript //nologo "Z:$here/send.js" "$origin" "Z:$work/firma.db" \
    "Z:$root/demo/faktura.xml" >"$work/output" || true
tr -d '\r' <"$work/output" | iconv -f CP852 -t UTF-8
# Nothing but the count and the sentinel, or a fact did not hold.
[[ $(tr -d '\r' <"$work/output") == $'cases 9\nKONIEC' ]]
