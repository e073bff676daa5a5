# Debian source packages without touching the user's apt configuration. Sourced, never run.
#
# Most machines have no deb-src entries, so apt is given a folder of its own: the user's Debian entries rewritten
# to deb-src, with package lists of its own beside it. Signatures are checked as always.

sources_apt() {
    local tool=$1
    shift
    "$tool" -q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$tavrix_cache/apt/sources" \
        -o Dir::State::lists="$tavrix_cache/apt/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache= \
        -o APT::Sandbox::User=root "$@"
}

# Keeps what belongs to this Debian release: another project's repository of the same shape is none of our business.
write_source_entries() {
    local codename folder=$tavrix_cache/apt/sources file given=${1:-/etc/apt}
    codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
    rm -rf "$folder"
    mkdir -p "$folder" "$tavrix_cache/apt/lists/partial"
    for file in "$given/sources.list" "$given"/sources.list.d/*.list; do
        [[ -f $file ]] || continue
        sed -nE "s%^[[:space:]]*deb[[:space:]]+((\[[^]]*\][[:space:]]+)?[^[:space:]]+[[:space:]]+$codename(-updates|-security|/updates)?[[:space:]]+.*\bmain\b.*)%deb-src \1%p" \
            "$file" >>"$folder/debian.list"
    done
    for file in "$given"/sources.list.d/*.sources; do
        [[ -f $file ]] || continue
        # Stanzas are separated by blank lines; a stanza switched off stays off.
        awk -v codename="$codename" '
            BEGIN { RS = ""; ORS = "\n\n" }
            $0 ~ "(^|\n)Suites:[^\n]*[ \t]" codename "([- \t\n/]|$)" && $0 ~ /(^|\n)Components:[^\n]*[ \t]main/ &&
            $0 !~ /(^|\n)Enabled:[ \t]*no/ {
                sub(/(^|\n)Types:[^\n]*/, "\nTypes: deb-src"); sub(/^\n/, ""); print
            }' "$file" >>"$folder/debian.sources"
    done
    find "$folder" -empty -type f -delete
    [[ -n $(ls "$folder") ]] || die "no Debian $codename entry found under $given; source packages need one"
}

# A suite whose index is broken does not stop the others; what counts is whether the package can be had.
refresh_source_lists() {
    [[ -n ${source_lists_fresh:-} ]] && return
    write_source_entries
    sources_apt apt-get update || true
    source_lists_fresh=1
}

# source_versions package: every version on offer, newest first.
source_versions() {
    sources_apt apt-cache showsrc --only-source "$1" | sed -n 's/^Version: //p' | sort -Vru
}

# fetch_source package version: leaves in fetched_source the folder of the version asked for, which is the one installed
# natively; a mirror that has dropped it gives the newest it still has.
fetch_source() {
    local package=$1 wanted=$2 version kept
    fetched_source=$tavrix_cache/sources/$package-$wanted
    [[ ! -d $fetched_source ]] || return 0
    refresh_source_lists
    for version in "$wanted" $(source_versions "$package"); do
        kept=$tavrix_cache/sources/$package-$version
        if [[ ! -d $kept ]] && ! download_source "$package" "$version" "$kept"; then continue; fi
        [[ $version == "$wanted" ]] || echo "note: $package $wanted is not to be had any more, $version taken"
        # Under the name that was asked for too, so that nobody asks the mirror again.
        [[ $version == "$wanted" ]] || ln -sfn "${kept##*/}" "$fetched_source"
        fetched_source=$kept
        return
    done
    echo "no version of the source package $package could be downloaded"
    return 1
}

download_source() {
    local package=$1 version=$2 kept=$3 folder
    folder=$(mktemp -d "$tavrix_cache/download.XXXXXX")
    (
        cd "$folder"
        if sources_apt apt-get source --only-source "$package=$version"; then
            mv "$(find . -mindepth 1 -maxdepth 1 -type d)" unpacked
        elif [[ $version == *-* ]] && sources_apt apt-get source --only-source --tar-only "$package=$version"; then
            # Only Debian's own part is missing on the mirror; the authors' archive builds without it.
            echo "note: $package $version is built without Debian's patches, which the mirror does not have"
            mkdir unpacked
            tar -xf "$(find . -name '*.orig.tar.*' ! -name '*.asc')" -C unpacked --strip-components=1
        else
            exit 1
        fi
    ) || {
        rm -rf "$folder"
        return 1
    }
    mkdir -p "$(dirname "$kept")"
    rm -rf "$kept"
    mv "$folder/unpacked" "$kept"
    rm -rf "$folder"
}
