# ./dev package: what a user downloads, out of what the doors built. Sourced, never run.
#
# Results are in build/package, with their hashes; the same commit gives the same bytes. What is installed is put together
# in build/package/stage first, all of it with the commit's time.

package_folder=$root/build/package
stage=$package_folder/stage
# What there is of programs for Windows, all of them 64-bit.
windows_programs=(tavrix.exe tavrix-sandbox.exe)
version_text() { sed -nE 's/.*int version_(major|minor|revision) = ([0-9]+);.*/\2/p' "$root/base/version.h" | paste -sd.; }
need_file() { [[ -f $1 ]] || die "$1 is not there: $2"; }

# Text files as Windows' own editor reads them.
windows_text() { sed 's/$/\r/; 1s/^/\xef\xbb\xbf/' "$1" >"$2"; }

# copy_tree folder target: what git knows of it.
copy_tree() {
    local name
    while IFS= read -r -d '' name; do
        install -D -m 644 "$root/$1/$name" "$2/$name"
    done < <(git -C "$root/$1" ls-files -z)
}

# A key of the settings that its page does not explain would be found by nobody.
check_settings_page() {
    local key
    while read -r key; do
        grep -q "^$key " "$root/packaging/Tavrix.json.opis.txt" || die "packaging/Tavrix.json.opis.txt does not explain $key"
    done < <(sed -nE 's/^ *Key\{"([a-z_.]+)",.*/\1/p' "$root/frame/settings_file.cpp")
}

# split_symbols PREFIX FILE: what a debugger needs goes into a file beside the others, the rest stays small.
split_symbols() {
    local prefix=$1 file=$2 symbols=$package_folder/symbols
    mkdir -p "$symbols"
    "${prefix}objcopy" --only-keep-debug "$file" "$symbols/${file##*/}.debug"
    "${prefix}strip" "$file"
    (cd "$symbols" && "${prefix}objcopy" --add-gnu-debuglink="${file##*/}.debug" "$file")
}

stage_windows() {
    local bits folder from file to=$stage/windows
    for bits in 32 64; do
        folder=$to/x$([[ $bits == 32 ]] && echo 86 || echo 64) from=$root/build/win$bits/bin
        mkdir -p "$folder"
        for file in Tavrix.dll Tavrix.manifest Tavrix.tlb host.exe.manifest; do
            need_file "$from/$file" "./dev build win$bits makes it, where Wine can run"
            install -m 644 "$from/$file" "$folder/"
        done
        # The hosts' classes look for fonts beside the program; beside the DLL is where an installer finds them.
        install -m 644 "$from"/fonts/*.ttf "$folder/"
    done
    mkdir -p "$to/bin"
    for file in "${windows_programs[@]}"; do
        need_file "$root/build/win64/bin/$file" "./dev build win64 makes it"
        install -m 755 "$root/build/win64/bin/$file" "$to/bin/"
        split_symbols x86_64-w64-mingw32- "$to/bin/$file"
    done
    copy_tree examples "$to/examples"
    # What the examples are tried with.
    install -m 644 "$root/demo/faktura.xml" "$root/demo/schema.sql" "$to/examples/"
    copy_tree stylesheets "$to/stylesheets"
    need_file "$root/build/site/index.html" "tools/site/build.py makes it"
    cp -r "$root/build/site" "$to/docs"
    windows_text "$root/LICENSE" "$to/LICENSE.txt"
    windows_text "$root/packaging/instalacja.txt" "$to/instalacja.txt"
    windows_text "$root/packaging/Tavrix.json.opis.txt" "$to/Tavrix.json.opis.txt"
    install -m 644 "$root/packaging/Tavrix.json" "$to/Tavrix.default.json"
}

stage_debian() {
    local program to=$stage/debian share=$stage/debian/usr/share
    mkdir -p "$to/usr/bin" "$share/man/man1" "$share/bash-completion/completions" "$share/doc/tavrix/examples" \
        "$share/tavrix" "$to/DEBIAN"
    for program in tavrix tavrix-sandbox; do
        need_file "$root/build/native/bin/$program" "./dev build native makes it"
        install -m 755 "$root/build/native/bin/$program" "$to/usr/bin/"
        split_symbols '' "$to/usr/bin/$program"
        python3 "$root/packaging/cli_pages.py" "$to/usr/bin/$program" "$version" "$share/man/man1/$program.1" \
            "$share/bash-completion/completions/$program"
        gzip -9n "$share/man/man1/$program.1"
    done
    copy_tree stylesheets "$share/tavrix"
    install -m 644 "$root/packaging/debian/tavrix-sandbox.service" "$share/doc/tavrix/examples/"
    debian_texts "$to" "$share/doc/tavrix"
    chmod -R u=rwX,go=rX "$to"
    (cd "$to" && find usr -type f -print0 | sort -z | xargs -0 md5sum >DEBIAN/md5sums)
}

maintainer='The Tavrix authors <pomoc@tavrix.example>'

debian_texts() {
    local to=$1 doc=$2 depends package
    {
        printf 'Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\nUpstream-Name: Tavrix\n\n'
        printf 'Files: *\nCopyright: 2026 The Tavrix authors\nLicense: Expat\n'
        sed -n '/^Permission/,$p' "$root/LICENSE" | sed 's/^$/./; s/^/ /'
    } >"$doc/copyright"
    # Compiled in, with no package of their own beside this one.
    for package in libboost1.74-dev libcli11-dev nlohmann-json3-dev libspdlog-dev libfmt-dev; do
        printf '%s\n\n' "$package"
        cat "/usr/share/doc/$package/copyright"
        printf '\n'
    done | gzip -9n >"$doc/included-libraries.txt.gz"
    {
        printf 'tavrix (%s) stable; urgency=medium\n\n  * Version %s.\n\n -- %s  %s\n' "$version" "$version" "$maintainer" \
            "$(LC_ALL=C date -u -R -d "@$SOURCE_DATE_EPOCH")"
    } | gzip -9n >"$doc/changelog.gz"
    # The tool reads a source package's control file, which is not there otherwise.
    mkdir -p "$package_folder/shlibdeps/debian"
    printf 'Source: tavrix\n\nPackage: tavrix\nArchitecture: amd64\n' >"$package_folder/shlibdeps/debian/control"
    depends=$(cd "$package_folder/shlibdeps" && dpkg-shlibdeps -O "$to/usr/bin/tavrix" "$to/usr/bin/tavrix-sandbox" |
        sed -n 's/^shlibs:Depends=//p')
    cat >"$to/DEBIAN/control" <<CONTROL
Package: tavrix
Version: $version
Architecture: amd64
Maintainer: $maintainer
Section: utils
Priority: optional
Installed-Size: $(du -sk --apparent-size "$to/usr" | cut -f1)
Depends: $depends
Recommends: ca-certificates
Description: invoices for KSeF and bar codes from the command line
 tavrix sends and fetches invoices of the Polish national e-invoicing system,
 draws bar codes and QR symbols, sends and fetches mail and signs PDF files.
 .
 tavrix-sandbox is a KSeF on one's own computer, for testing programs that send
 and fetch invoices.
CONTROL
}

write_sbom() {
    local program programs=()
    for program in "${windows_programs[@]}"; do
        programs+=("bin/$program=windows:$root/build/win64:bin/$program")
    done
    python3 "$root/packaging/sbom.py" "$version" "$(git -C "$root" rev-parse HEAD)" "$SOURCE_DATE_EPOCH" \
        "$package_folder/Tavrix-$version.cdx.json" "$stage/licences" \
        "x86/Tavrix.dll=windows:$root/build/win32:bin/Tavrix.dll" "x64/Tavrix.dll=windows:$root/build/win64:bin/Tavrix.dll" \
        "${programs[@]}" \
        "tavrix=native:$root/build/native/bin/tavrix" "tavrix-sandbox=native:$root/build/native/bin/tavrix-sandbox"
    install -m 644 "$root/docs/dejavu-licence.txt" "$stage/licences/dejavu.txt"
    cp -r "$stage/licences" "$stage/windows/licencje"
    install -m 644 "$package_folder/Tavrix-$version.cdx.json" "$stage/windows/licencje/"
}

one_time() { find "$stage" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +; }

# Into the folder named: twice the same bytes.
pack_into() {
    local to=$1
    mkdir -p "$to"
    LC_ALL=C.UTF-8 makensis -V2 -WX -INPUTCHARSET UTF8 "-DVERSION=$version" "-DSTAGE=$stage/windows" "-DFILES=$stage/files.nsh" \
        "-DOUTPUT=$to/Tavrix-$version-setup.exe" "$root/packaging/setup.nsi"
    python3 "$root/packaging/zip.py" "$stage/zip" "Tavrix-$version" "$to/Tavrix-$version-windows.zip"
    dpkg-deb --root-owner-group -Zxz --threads-max=1 --build "$stage/debian" "$to/tavrix_${version}_amd64.deb"
}

stage_all() {
    # The test's Wine prefix stays: making one takes longer than packing.
    find "$package_folder" -mindepth 1 -maxdepth 1 ! -name test -exec rm -rf {} + 2>/dev/null || true
    mkdir -p "$stage"
    check_settings_page
    stage_windows
    stage_debian
    write_sbom
    # The archive has its settings where the DLLs look for them, and no list of files.
    cp -r "$stage/windows" "$stage/zip"
    for folder in x86 x64; do cp "$stage/zip/Tavrix.default.json" "$stage/zip/$folder/Tavrix.json"; done
    python3 "$root/packaging/file_list.py" "$stage/windows" "$root/build/win32/bin/fonts" >"$stage/files.nsh"
    one_time
}

pack_twice() {
    pack_into "$package_folder/again"
    one_time
    pack_into "$package_folder"
    local file
    for file in "$package_folder"/again/*; do
        cmp "$file" "$package_folder/${file##*/}" || die "packed twice, ${file##*/} has other bytes"
    done
    rm -r "$package_folder/again"
    (cd "$package_folder" && sha256sum Tavrix-* tavrix_* >SHA256SUMS)
}

check_artefacts() {
    python3 "$root/tools/check_hardening.py" "$stage"/windows/x*/Tavrix.dll "$stage"/windows/bin/*.exe "$stage"/debian/usr/bin/*
    python3 "$root/tools/check_imports.py" "$stage"/windows/x*/Tavrix.dll "$stage"/windows/bin/*.exe
}

command_package() {
    local began_s=$SECONDS stand_in=
    [[ ${1:-} != --test ]] || stand_in=tavrix_dev_ado
    need tools 32 64
    build_step native tavrix tavrix-sandbox
    ((step_status == 0)) || exit "$step_status"
    build_step win32 tavrix_dll fonts ${stand_in:+"$stand_in"}
    ((step_status == 0)) || exit "$step_status"
    build_step win64 tavrix_dll fonts "${windows_programs[@]/#/bin/}"
    ((step_status == 0)) || exit "$step_status"
    version=$(version_text)
    SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
    export SOURCE_DATE_EPOCH TZ=UTC
    umask 022
    # Debian's own Python, whichever else comes first: the one that has Debian's packages.
    step "build the documentation's pages" "mend what it says" /usr/bin/python3 "$root/tools/site/build.py" "$root/build/site"
    step "put together what is installed" "read the log" stage_all
    step "check how the artefacts are hardened" "mend what it names" check_artefacts
    step "pack, twice, and compare" "read the log" pack_twice
    if [[ ${1:-} == --test ]]; then
        step "install and remove what was packed" "read the log" test_package
        grep -h '^SKIPPED\|skipped' "$log_folder/install-and-remove-what-was-packed.log" || true
    fi
    (cd "$package_folder" && ls -l Tavrix-* tavrix_* | awk '{print $5, $9}')
    say "results: build/package, in $((SECONDS - began_s)) s"
}

test_package() {
    python3 "$root/packaging/test_package.py" "$package_folder" "$(wine_pattern 64)"
    bash "$root/packaging/test_debian.sh" "$package_folder" "$tavrix_cache"
    if command -v osslsigncode >/dev/null; then
        bash "$root/packaging/test_signing.sh" "$package_folder"
    else
        echo "SKIPPED: signing, because osslsigncode is not installed"
    fi
}
