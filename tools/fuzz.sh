#!/usr/bin/env bash
# ./dev fuzz [TARGET...] [--minutes N]: feeds the parsers what nobody would send, learning from coverage, under the
# address and undefined behaviour sanitizers. Every target for one minute unless told.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
for part in lib packages sources windows_deps wine setup build; do
    # shellcheck source=/dev/null
    source "$root/tools/$part.sh"
done

minutes=1 targets=()
while (($# > 0)); do
    case $1 in
        --minutes) minutes=${2:?--minutes needs a number} && shift ;;
        -*) die "./dev fuzz knows --minutes, not $1" ;;
        *) targets+=("$1") ;;
    esac
    shift
done
[[ $minutes =~ ^[0-9]+$ && $minutes -gt 0 ]] || die "--minutes takes a whole number of minutes, not '$minutes'"
all=$(sed -nE 's/^tavrix_fuzz_target\(([a-z0-9_]+).*/\1/p' "$root/fuzz/CMakeLists.txt")
for target in "${targets[@]}"; do
    grep -qx "$target" <<<"$all" || die "there is no target '$target'; there are: $(xargs <<<"$all")"
done
((${#targets[@]} > 0)) || mapfile -t targets <<<"$all"

need_package clang
need_package libclang-rt-14-dev
build_step fuzz "${targets[@]/#/fuzz_}"
((step_status == 0)) || exit "$step_status"

failed=0
for target in "${targets[@]}"; do
    corpus=$root/build/fuzz/corpus/$target findings=$root/build/fuzz/findings/$target log=$root/build/log/fuzz-$target.log
    mkdir -p "$corpus" "$findings"
    printf '%-20s %3d min ... ' "$target" "$minutes"
    if TAVRIX_FUZZ_SEEDS=$corpus "$root/build/fuzz/bin/fuzz_$target" -max_total_time=$((minutes * 60)) -timeout=10 \
        -rss_limit_mb=2048 -max_len=65536 -print_final_stats=1 -artifact_prefix="$findings/" "$corpus" >"$log" 2>&1; then
        echo "no finding ($(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs, $(find "$corpus" -type f | wc -l) kept)"
    else
        echo "FOUND something: build/log/fuzz-$target.log, the input is in build/fuzz/findings/$target"
        grep -m3 -E 'ERROR|SUMMARY|runtime error|Test unit written' "$log" || tail -n 5 "$log"
        failed=1
    fi
done
exit "$failed"
