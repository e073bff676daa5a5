#!/usr/bin/env bash
# build_compiler.sh FOLDER: a Free Pascal for 32-bit Windows out of Debian's fp-compiler, fp-units-base and fpc-source: what a
# Delphi program needs of a compiler, with the ComObj unit and an importer of type libraries that nobody here wrote. FOLDER gets
# ppcross386, units/ and import_library.exe. About 20 seconds of one processor, no network.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
out=$(mkdir -p "$1" && cd "$1" && pwd)
source_tree=$(find /usr/share/fpcsrc -mindepth 1 -maxdepth 1 -type d -name '[0-9]*' 2>/dev/null | sort -V | tail -n 1)
[[ -n $source_tree ]] && command -v ppcx64 >/dev/null || {
    echo "apt-get install fp-compiler fp-units-base fpc-source" >&2
    exit 1
}
version=${source_tree##*/}

mkdir -p "$out"/{tree,units,objects}
cp -r "$source_tree/." "$out/tree/"

# The compiler itself, for another processor and system. Its messages are compiled in.
cd "$out/tree/compiler"
ppcx64 -v0 -FU"$out/objects" -FE"$out" utils/msg2inc.pp
messages=$(find /usr/lib -path "*fpc/$version/msg/errore.msg" | head -n 1)
(cd "$out" && ./msg2inc "$messages" msg msg >/dev/null && mv msgtxt.inc msgidx.inc tree/compiler/)
rm -f "$out"/objects/*
ppcx64 -v0 -O1 -Xs -di386 -dGDB -dBROWSERLOG -Fii386 -Fix86 -Fui386 -Fux86 -Fusystems -Fi. \
    -FU"$out/objects" -o"$out/ppcross386" pp.pas

compile() { "$out/ppcross386" -n -Twin32 -O1 -v0 -FU"$out/units" -Fu"$out/units" "$@"; }

cd "$out/tree/rtl/win32"
runtime=()
for folder in ../inc ../i386 ../win ../win/wininc ../objpas ../objpas/sysutils ../objpas/classes ../charmaps .; do
    runtime+=("-Fi$folder" "-Fu$folder")
done
# The first compilation of the system unit stops after writing it.
compile "${runtime[@]}" -Sg -Us system.pp >/dev/null 2>&1 || true
compile "${runtime[@]}" ../objpas/objpas.pp
# These units want assembly that only the full build prepares; nothing here uses them.
sed -i 's/sysinitpas, sysinitcyg, sysinitgprof,/sysinitpas,/; s/extpas,//; s/sharemem, //' buildrtl.pp
compile "${runtime[@]}" buildrtl.pp >/dev/null

cd "$out/tree/packages/winunits-base/src"
packages=../..
automation=()
for folder in . $packages/rtl-objpas/src/{inc,win,common,i386} $packages/fcl-{registry,base,xml}/src $packages/fcl-base/src/win; do
    automation+=("-Fi$folder" "-Fu$folder")
done
for unit in comobj.pp stdole2.pas typelib.pas eventsink.pp; do compile "${automation[@]}" "$unit" >/dev/null; done
compile -FE"$out" "$here/import_library.pas" >/dev/null
rm -rf "$out"/{tree,objects,msg2inc}
