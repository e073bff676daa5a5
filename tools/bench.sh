#!/usr/bin/env bash
# ./dev bench: the figures, each beside a peer measured in the same run where there is one. Not a test.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
work=$(mktemp -d)
trap 'leave_host; rm -rf "$work"' EXIT

"$root/dev" build native win32
for door in native win32; do
    cmake -S "$root" -B "$root/build/$door" -DTAVRIX_BENCH=ON >"$work/configure.log" || { cat "$work/configure.log" >&2 && exit 1; }
    cmake --build "$root/build/$door" >"$work/build.log" || { tail -n 40 "$work/build.log" >&2 && exit 1; }
done

bin=$root/build/native/bin
echo
"$bin/send_bench"
"$bin/prepare_bench" "$work"
"$bin/json_bench"
"$bin/download_bench"
"$bin/barcode_bench"
head -c 1000000000 /dev/urandom >"$work/paczka.zip"
"$bin/package_bench" "$work/paczka.zip"
"$bin/sandbox_bench" "$bin/tavrix-sandbox"
"$bin/mail_bench"
"$bin/mail_fetch_bench"
python3 "$root/bench/pdf_bench.py" "$bin/tavrix"
python3 "$root/bench/xml_bench.py" "$bin/tavrix"
if [[ -x /usr/lib/wine/wine ]]; then
    start_sandbox "$bin/tavrix-sandbox" "$work"
    register_dlls 32 "$root/build/win32/bin" "$work/dll"
    write_settings "$work/dll/Tavrix.json"
    make_host_database "$work/firma.db"
    # Creating an object a hundred thousand times takes Wine minutes.
    TAVRIX_WINE_TIMEOUT_S=900 wine_program 32 "$root/build/win32/bin/facade_bench.exe" | tr -d '\r'
    wine_program 32 "$root/build/win32/bin/com_bench.exe" "Z:$work/firma.db" "Z:$root/demo/faktura.xml" | tr -d '\r'
    wine_program 32 "$root/build/win32/bin/package_bench.exe" "Z:$work/paczka.zip" | tr -d '\r'
    python3 "$root/tools/dll_makeup.py" "$root/build/win32"
else
    echo "COM door: not measured, 32-bit Wine is not to be had on this machine"
fi
