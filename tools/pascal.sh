# A Free Pascal that writes 32-bit Windows programs: the host that nobody here wrote. Made once per machine of Debian's packages,
# for the tests only. Sourced, never run.

pascal_packages=(fp-compiler fp-units-base fpc-source)

pascal_folder() {
    echo "$tavrix_cache/pascal-$(hash_of "$(installed_version fpc-source)" "$(cat "$root"/tools/pascal/{build_compiler.sh,import_library.pas})")"
}

# Without it the tests say what they skip.
need_pascal() {
    local folder
    if [[ -z $(installed_version fpc-source) || -z $(installed_version fp-units-base) ]]; then
        try_step "install Free Pascal and its sources" "the Pascal host is skipped; apt-get install ${pascal_packages[*]} brings it" \
            install_packages "${pascal_packages[@]}"
    fi
    folder=$(pascal_folder)
    [[ -d $folder ]] ||
        try_step "build a Free Pascal for Windows" "the Pascal host is skipped; read the log" build_pascal "$folder"
}

# The folder appears whole or not at all.
build_pascal() {
    local folder=$1
    rm -rf "$folder.new"
    "$root/tools/pascal/build_compiler.sh" "$folder.new"
    mv "$folder.new" "$folder"
}
