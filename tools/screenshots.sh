#!/usr/bin/env bash
# Takes the pictures of the library's own windows for docs/pictures, at 100 % and 200 %, in a copy of the 32-bit Wine
# prefix that goes away afterwards. After ./dev build win32.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
eval "$("$root/dev" env)"
work=$(mktemp -d "$root/build/pictures.XXXXXX")
export TAVRIX_WINEPREFIX=$work/wine

# A window system is started per program and says when it goes.
wine_program() { "$root/tools/wine-run" 32 "$@" 2>/dev/null; }
leave() {
    wine_program --server --kill || true
    rm -rf "$work"
}
trap leave EXIT

# The registry is copied for real, the rest as links.
cp -al "$root/build/wine32" "$TAVRIX_WINEPREFIX"
rm -f "$TAVRIX_WINEPREFIX"/*.reg
cp -a "$root"/build/wine32/*.reg "$TAVRIX_WINEPREFIX/"
# The signs on title bars are letters of this font; the tests do without.
(cd "$work" && apt-get -q -o APT::Sandbox::User=root download fonts-wine && dpkg -x fonts-wine_*.deb fonts)
cp "$work/fonts/usr/share/wine/fonts/marlett.ttf" "$TAVRIX_WINEPREFIX/drive_c/windows/Fonts/"

cmake --build "$root/build/win32" --target tavrix_dialogs_program
# What docs call a picture, and what the program calls its window.
pictures=(about=o-programie message-form=wiadomosc retrieval-form=odbior socket-form=odbior-gniazdo
    informator=informator informator-large=informator-duzy order-informator=zamowienie printer-choice=drukarka-przyklad
    chart-bars=wykres-slupkowy chart-lines=wykres-liniowy chart-pie=wykres-kolowy browser=browse)
for percent in 100 200; do
    wine_program reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d $((96 * percent / 100)) /f >/dev/null
    for picture in "${pictures[@]}"; do
        form=${picture%=*}
        wine_program "$root/build/win32/bin/tavrix-dialogs.exe" "${picture#*=}" --picture "Z:$work/$form.bmp"
        python3 "$root/tools/bitmap_to_png.py" "$work/$form.bmp" "$root/docs/pictures/$form-$percent.png"
    done
done
