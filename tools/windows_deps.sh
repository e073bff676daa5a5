# The libraries of the Windows doors, cross-built once per machine from Debian's own sources.
#
# Each recipe in tools/deps/ builds one library into its own keyed folder of the cache, so that changing one recipe
# rebuilds one library; the prefix CMake searches is those folders put together with hard links. The keys hold
# everything that decides the result, so two checkouts with different recipes share a cache without meeting.
# Sourced, never run.

# In the order of building: a recipe may use the ones before it. The programs, and what only they link, are 64-bit.
windows_libraries() {
    echo openssl curl sqlite googletest json cli11 qrcodegen zlib jpeg qpdf
    [[ $1 == 32 ]] || echo png xml xslt archive logging boost
}

# recipe_fields library: sets source_package, native_package, needs and the function build_library.
load_recipe() {
    local library=$1
    source_package='' native_package='' needs=''
    # shellcheck source=/dev/null
    source "$root/tools/deps/$library.sh"
}

library_key() {
    local library=$1 bits=$2
    (
        load_recipe "$library"
        keys=()
        for needed in $needs; do keys+=("$(library_key "$needed" "$bits")"); done
        hash_of "$bits" "$(installed_version "$native_package")" "$(installed_version "$(compiler_package "$bits")")" \
            "$(cat "$root/tools/deps/$library.sh" "$root/tools/deps/common.sh")" "${keys[@]}"
    )
}

compiler_package() { [[ $1 == 32 ]] && echo g++-mingw-w64-i686-posix || echo g++-mingw-w64-x86-64-posix; }
triplet_of() { [[ $1 == 32 ]] && echo i686-w64-mingw32 || echo x86_64-w64-mingw32; }
library_folder() { echo "$tavrix_cache/libraries/$1-$2-$(library_key "$1" "$2")"; }

windows_prefix() {
    local bits=$1 library keys=()
    for library in $(windows_libraries "$bits"); do keys+=("$(library_key "$library" "$bits")"); done
    echo "$tavrix_cache/win$bits-$(hash_of "${keys[@]}")"
}

# Runs inside a step: everything a recipe may rely on is set here.
build_one_library() {
    local library=$1 bits=$2 install
    install=$(library_folder "$library" "$bits")
    load_recipe "$library"
    triplet=$(triplet_of "$bits")
    work=$(mktemp -d "$tavrix_cache/work-$library-$bits.XXXXXX")
    source "$root/tools/deps/common.sh"
    trap 'rm -rf "$work"' EXIT
    stage=$work/install
    mkdir -p "$stage"
    for needed in $needs; do declare "${needed}_folder=$(library_folder "$needed" "$bits")"; done
    if [[ -n $source_package ]]; then
        fetch_source "$source_package" "$(installed_version "$native_package")"
        cp -a "$fetched_source" "$work/source"
    fi
    cd "$work"
    build_library
    # The folder appears whole or not at all: an interrupted build leaves nothing that looks finished.
    rm -rf "$install"
    mkdir -p "$(dirname "$install")"
    mv "$stage" "$install"
}

assemble_prefix() {
    local bits=$1 prefix=$2 library
    rm -rf "$prefix.new"
    mkdir -p "$prefix.new"
    for library in $(windows_libraries "$bits"); do
        cp -al "$(library_folder "$library" "$bits")/." "$prefix.new/"
    done
    mv "$prefix.new" "$prefix"
}

# All sources at once, so that builds that run side by side find them there.
fetch_windows_sources() {
    local library
    for library in $(windows_libraries 64); do
        load_recipe "$library"
        [[ -z $source_package ]] || fetch_source "$source_package" "$(installed_version "$native_package")"
    done
}

setup_windows_libraries() {
    local bits=$1 prefix library
    prefix=$(windows_prefix "$bits")
    if [[ -d $prefix ]]; then return; fi
    for library in $(windows_libraries "$bits"); do
        [[ -d $(library_folder "$library" "$bits") ]] && continue
        step "cross-build $library for $bits-bit Windows" \
            "read the log; a download that failed is cured by running ./dev setup again" \
            build_one_library "$library" "$bits"
    done
    assemble_prefix "$bits" "$prefix"
}
