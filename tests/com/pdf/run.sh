#!/usr/bin/env bash
# run.sh BITS WINDOWS_BIN: signs a PDF file twice through the COM door of WINDOWS_BIN's DLL, the second time into the same
# file and with a PFX file of the old kind; pdfsig and the structure's checker judge it.
set -euo pipefail

bits=$1 windows_bin=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=$(cd "$here/../../.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT
register_dlls "$bits" "$windows_bin" "$work/dll"

cd "$work"
mkdir files
openssl req -x509 -newkey rsa:2048 -nodes -keyout key -out certificate -utf8 -subj '/CN=Zażółć Gęśla-Jaźń' 2>/dev/null
openssl pkcs12 -export -inkey key -in certificate -out files/klucz.pfx -passout pass:zażółć
openssl pkcs12 -export -legacy -inkey key -in certificate -out files/stary.pfx -passout pass:zażółć
cat >draft <<'END'
%PDF-1.4
1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj
2 0 obj << /Type /Pages /Kids [ 3 0 R ] /Count 1 >> endobj
3 0 obj << /Type /Page /Parent 2 0 R /MediaBox [ 0 0 400 300 ] >> endobj
trailer << /Root 1 0 R /Size 4 >>
END
qpdf --warning-exit-0 draft files/in.pdf 2>/dev/null

wine_program "$bits" cscript //nologo "Z:$here/sign.js" "Z:$work/files" >output || true
tr -d '\r' <output
[[ $(tr -d '\r' <output) == KONIEC ]]
pdfsig "files/raz ś.pdf" >said
cat said
[[ $(grep -c 'Signature is Valid' said) == 2 ]] && grep -q 'Total document signed' said
python3 "$root/tests/pdfsign/structure.py" <(head -c "$(grep -aob '%%EOF' "files/raz ś.pdf" | sed -n '2s/:.*//p' | awk '{ print $1 + 6 }')" \
    "files/raz ś.pdf") "files/raz ś.pdf"
