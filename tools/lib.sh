# What every command of ./dev shares: where things are, one line of progress per step, how a step fails.
# Sourced, never run.

: "${HOME:=$(cd ~ && pwd)}"
tavrix_cache=${TAVRIX_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/tavrix}
# One checkout's logs are not another's.
log_folder=$root/build/log
jobs=${TAVRIX_JOBS:-$(nproc)}
started_s=$SECONDS

# Messages of tools are compared and parsed, and a build must not depend on whose machine it is.
export LC_ALL=C.UTF-8

say() { printf '%s\n' "$*"; }
warn() { printf 'dev: warning: %s\n' "$*" >&2; }
die() {
    printf 'dev: %s\n' "$*" >&2
    exit 1
}

# as_root command...: package management is the only thing that needs it.
as_root() {
    if ((EUID == 0)); then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo -- "$@"
    else
        die "installing packages needs root: run ./dev setup as root, or install sudo"
    fi
}

# step "what is being done" "what the user can do when it fails" command...
# One line with the time it took; what the command says goes to a log file, shown when the command fails. The command
# may not rely on variables it sets: it runs in a subshell.
step() {
    try_step "$@"
    ((step_status == 0)) || exit "$step_status"
}

# The same for a caller that goes on after a failure; it finds the command's status in step_status. (Returning it
# would tempt callers into a condition, inside which bash ignores every failure but the last.)
try_step() {
    local title=$1 advice=$2
    shift 2
    local log line began_s=$SECONDS
    mkdir -p "$log_folder"
    log=$log_folder/$(tr -cs 'A-Za-z0-9' '-' <<<"$title" | sed 's/-*$//').log
    line=$(printf '[%4ds] %s ...' $((began_s - started_s)) "$title")
    # Steps that run side by side print their line when they are over.
    [[ -n ${side_by_side:-} ]] || printf '%s ' "$line"
    # Descriptor 9 is the lock of the cache; a server left behind by the command must not hold it.
    set +e
    (
        set -e
        "$@"
    ) >"$log" 2>&1 </dev/null 9>&-
    step_status=$?
    set -e
    [[ -z ${side_by_side:-} ]] || printf '%s ' "$line"
    if ((step_status == 0)); then
        printf 'done (%d s)\n' $((SECONDS - began_s))
        return
    fi
    printf 'FAILED (%d s)\n' $((SECONDS - began_s))
    {
        printf -- '---- the last lines of %s\n' "$log"
        tail -n 40 "$log"
        printf -- '----\ndev: the step "%s" failed.\n' "$title"
        printf 'dev: what to do: %s\n' "$advice"
    } >&2
}

# hash_of text...: short enough for a folder name, long enough never to collide here.
hash_of() { printf '%s\n' "$@" | sha256sum | cut -c1-12; }

# installed_version package: its Debian source version, empty when it is not installed.
installed_version() {
    dpkg-query -W -f='${db:Status-Abbrev}|${source:Version}\n' "$1" 2>/dev/null |
        sed -n 's/^ii *|//p' | head -n 1
}
