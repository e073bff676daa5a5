# Wine prefixes. Sourced, never run.
#
# Making one takes ten seconds and half a gigabyte, so a pattern is made once per machine; a checkout works in a copy
# of its own made of hard links, so that two checkouts never meet in one registry.

wine_pattern() {
    echo "$tavrix_cache/wine$1-$(hash_of "$(installed_version wine)" "$(declare -f make_wine_pattern)" "$(cat "$root/tools/wine-run")")"
}
wine_folder() { echo "$root/build/wine$1"; }
can_run_windows() { [[ $1 == 64 || -x /usr/lib/wine/wine ]]; }

make_wine_pattern() {
    local bits=$1 pattern=$2
    # Patterns of versions nobody has used for weeks; at half a gigabyte each they would add up.
    find "$tavrix_cache" -maxdepth 1 -name "wine$bits-*" -mtime +14 -exec rm -rf {} +
    rm -rf "$pattern.new"
    TAVRIX_WINEPREFIX=$pattern.new TAVRIX_WINE_TIMEOUT_S=300 "$root/tools/wine-run" "$bits" wineboot --init
    # A program that crashes says where and ends, instead of waiting in a window for somebody to close it.
    TAVRIX_WINEPREFIX=$pattern.new "$root/tools/wine-run" "$bits" reg add 'HKCU\Software\Wine\WineDbg' \
        /v ShowCrashDialog /t REG_DWORD /d 0 /f
    # The display that nobody sees has no window manager; Wine would ask it about each window that closes and wait two
    # seconds for the answer.
    TAVRIX_WINEPREFIX=$pattern.new "$root/tools/wine-run" "$bits" reg add 'HKCU\Software\Wine\X11 Driver' \
        /v Managed /d N /f
    TAVRIX_WINEPREFIX=$pattern.new "$root/tools/wine-run" "$bits" --server --wait
    mv "$pattern.new" "$pattern"
}

copy_wine_pattern() {
    local bits=$1 pattern=$2 folder
    folder=$(wine_folder "$bits")
    rm -rf "$folder"
    mkdir -p "$root/build"
    # Programs are never written in place, only replaced; the registry is copied for real. Another file system, or
    # one without hard links, gets a full copy.
    cp -al "$pattern" "$folder" 2>/dev/null || { rm -rf "$folder" && cp -a "$pattern" "$folder"; }
    rm -f "$folder"/*.reg
    cp -a "$pattern"/*.reg "$folder/"
    echo "$pattern" >"$folder/made-from"
}

need_wine_prefix() {
    local bits=$1 pattern folder
    can_run_windows "$bits" || return 0
    pattern=$(wine_pattern "$bits") folder=$(wine_folder "$bits")
    [[ $(cat "$folder/made-from" 2>/dev/null) != "$pattern" ]] || return 0
    [[ -d $pattern ]] || step "make a $bits-bit Wine prefix" \
        "try: tools/wine-run $bits wineboot --init" make_wine_pattern "$bits" "$pattern"
    copy_wine_pattern "$bits" "$pattern"
}
