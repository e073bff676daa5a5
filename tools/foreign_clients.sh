#!/usr/bin/env bash
# Lets KSeF clients that nobody here wrote do their jobs against a sandbox of this build, over HTTPS on loopback, and says
# which steps they got through. Status 0 when all jobs did theirs. After ./dev build native.
#
#     tools/foreign_clients.sh [JOB...]
#
# A job is a file tests/sandbox/clients/JOB.mjs: it finds the sandbox's address in TAVRIX_SANDBOX and an invoice in
# TAVRIX_INVOICE, prints a line for each step (support/job.mjs helps) and ends with status 0 when it succeeded. All jobs
# of the folder run unless some are named. The clients come from npm in the versions and with the hashes of
# package-lock.json and are kept in ./dev's cache; none of their installation scripts is run.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
# shellcheck source=tools/lib.sh
source "$root/tools/lib.sh"
# shellcheck source=tools/host.sh
source "$root/tools/host.sh"
jobs_folder=$root/tests/sandbox/clients
program=$root/build/native/bin/tavrix-sandbox
# The published schemas, where the machine has them: the sandbox then checks invoices fully.
schemas=${TAVRIX_KSEF_SCHEMAS:-$root/../shared/ksef/xsd}

command -v node >/dev/null && command -v npm >/dev/null || die "the clients need node (20 or later) and npm"
[[ -x $program ]] || die "no sandbox to talk to: run ./dev build native"

# Renamed into place when it is complete, so that an interrupted download is not taken for one.
clients=$tavrix_cache/foreign-clients-$(hash_of "$(cat "$jobs_folder/package-lock.json")")
if [[ ! -d $clients ]]; then
    rm -rf "$clients.new"
    mkdir -p "$clients.new"
    cp "$jobs_folder"/package{,-lock}.json "$clients.new/"
    step "fetch the clients" "run this again when the network works" \
        npm ci --prefix "$clients.new" --ignore-scripts --no-audit --no-fund
    mv "$clients.new" "$clients"
fi

work=$(mktemp -d)
leave() {
    leave_host
    rm -rf "$work"
}
trap leave EXIT

# Node looks for packages beside the file that wants them.
cp -r "$jobs_folder/." "$work/"
ln -s "$clients/node_modules" "$work/node_modules"

arguments=(--https --ca-file-out "$work/ca.pem" --auth-polls 1 --invoice-polls 1)
[[ ! -d $schemas ]] || arguments+=(--schemas "$schemas")
start_sandbox "$program" "$work" "${arguments[@]}"
# By name: one of the clients uploads to no address that is a private number.
export TAVRIX_SANDBOX=${origin/127.0.0.1/localhost} TAVRIX_INVOICE=$root/demo/faktura.xml NODE_EXTRA_CA_CERTS=$work/ca.pem
unset HTTP_PROXY HTTPS_PROXY http_proxy https_proxy

# run_job JOB: its steps as rows of the table, its complaint when it fails.
run_job() {
    local job=$1 step result note
    if (cd "$work" && timeout 600 node "$job.mjs" 2>"$job.err") |
        while IFS=$'\t' read -r step result note; do
            printf '%-14s %-34s %-7s %s\n' "$job" "$step" "$result" "$note"
        done; then
        return
    fi
    printf '%-14s %-34s %s\n' "$job" "(the job)" FAILED
    head -n 30 "$work/$job.err" >&2
    return 1
}

if (($# == 0)); then
    for file in "$jobs_folder"/*.mjs; do set -- "$@" "$(basename "$file" .mjs)"; done
fi
failed=()
printf '%-14s %-34s %-7s %s\n' job step result time
for job in "$@"; do run_job "$job" || failed+=("$job"); done
((${#failed[@]} == 0)) || die "failed: ${failed[*]}"
say "jobs that did their work: $#"
