# ./dev test: every door's tests, then the checks of the tree itself. Sourced, never run.

# A display for the windows of the tests, for as long as the run lasts.
start_display() {
    local number
    coproc display { exec Xvfb -displayfd 1 -screen 0 1280x1024x24 -nolisten tcp 2>/dev/null; }
    display_process=$display_PID
    read -r -t 20 number <&"${display[0]}" || die "Xvfb did not start; try: Xvfb :99"
    export TAVRIX_DISPLAY=:$number
}

stop_test_servers() {
    local bits
    for bits in 32 64; do
        [[ ! -d $(wine_folder "$bits") ]] || "$root/tools/wine-run" "$bits" --server --kill >/dev/null 2>&1 || true
    done
    [[ -z ${display_process:-} ]] || kill "$display_process" 2>/dev/null || true
}

# Its status is the tests' own: failures are counted from the results, not from here.
run_ctest() {
    local door=$1 folder=$root/build/$1
    mkdir -p "$folder/results/gtest"
    if is_windows "$door"; then
        # Under Wine one CTest entry is a whole program; its own report tells the cases apart.
        export GTEST_OUTPUT="xml:Z:$folder/results/gtest/"
        # Wine's services hold the output of the program that they were started for: a test would last until they end.
        "$root/tools/wine-run" "$(bits_of "$door")" cmd /c exit >/dev/null 2>&1 </dev/null || true
    fi
    ctest --test-dir "$folder" --output-on-failure --timeout 600 -j "$jobs" \
        --output-junit "$folder/results/ctest.xml" >"$folder/results/ctest.log" 2>&1 </dev/null
}

test_door() {
    local door=$1 began_s=$SECONDS
    if is_windows "$door" && ! can_run_windows "$(bits_of "$door")"; then
        mkdir -p "$root/build/$door/results"
        ctest --test-dir "$root/build/$door" -N >"$root/build/$door/results/skipped.txt"
        say "SKIPPED: the tests of $door, because $(bits_of "$door")-bit Wine is not to be had on this machine"
        return
    fi
    printf '[%4ds] test %s ... ' $((SECONDS - started_s)) "$door"
    if run_ctest "$door"; then
        printf 'done (%d s)\n' $((SECONDS - began_s))
    else
        printf 'FAILED (%d s)\n' $((SECONDS - began_s))
        tail -n 60 "$root/build/$door/results/ctest.log"
        say "---- all of it: build/$door/results/ctest.log"
    fi
}

# check_tree name command...: one check of the tree counts as one test.
check_tree() {
    local name=$1 log=$root/build/checks/$1.log began_s=$SECONDS
    shift
    printf '[%4ds] check %s ... ' $((SECONDS - started_s)) "$name"
    if "$@" >"$log" 2>&1 </dev/null; then
        printf 'done (%d s)\n' $((SECONDS - began_s))
        echo "passed $name" >>"$root/build/checks/results.txt"
    else
        printf 'FAILED (%d s)\n' $((SECONDS - began_s))
        tail -n 40 "$log"
        echo "failed $name" >>"$root/build/checks/results.txt"
    fi
}

check_the_tree() {
    local door dlls=()
    rm -rf "$root/build/checks"
    mkdir -p "$root/build/checks"
    check_tree tools python3 "$root/tools/test_tools.py"
    check_tree layers python3 "$root/tools/check_layers.py"
    check_tree format python3 "$root/tools/check_format.py" --cache "$tavrix_cache/formatted"
    check_tree stylesheets python3 "$root/tests/stylesheets/faktura_test.py"
    # Debian's own python3 has Debian's python3-markdown; another one on the path need not.
    check_tree site /usr/bin/python3 "$root/tools/site/build.py"
    for door in "$@"; do
        case $door in
            native)
                check_tree headers-native python3 "$root/tools/check_headers.py" native -j "$jobs"
                check_tree hardening-native python3 "$root/tools/check_hardening.py" "$root"/build/native/bin/tavrix{,-sandbox}
                ;;
            win32 | win64)
                [[ $door == win64 ]] || check_tree headers-windows python3 "$root/tools/check_headers.py" win32 -j "$jobs"
                mapfile -t dlls < <(find "$root/build/$door/bin" -name '*.dll' -o -name '*.exe' 2>/dev/null)
                ((${#dlls[@]} == 0)) || check_tree "imports-$door" python3 "$root/tools/check_imports.py" "${dlls[@]}"
                mapfile -t dlls < <(find "$root/build/$door/bin" -name 'Tavrix.dll' -o -name 'tavrix.exe' -o -name 'tavrix-sandbox.exe' 2>/dev/null)
                ((${#dlls[@]} == 0)) || check_tree "hardening-$door" python3 "$root/tools/check_hardening.py" "${dlls[@]}"
                ;;
        esac
    done
}

command_test() {
    local doors=("$@") door
    ((${#doors[@]} > 0)) || doors=("${all_doors[@]}")
    check_doors "${doors[@]}"
    need_for_doors "${doors[@]}"
    if [[ " ${doors[*]} " == *" win32 "* ]]; then
        need pascal
        TAVRIX_PASCAL=$(pascal_folder)
        export TAVRIX_PASCAL
    fi
    trap stop_test_servers EXIT
    start_display
    for door in "${doors[@]}"; do
        # What the last run found must not be counted for a door that no longer builds.
        rm -rf "$root/build/$door/results"
        build_step "$door"
        ((step_status != 0)) || test_door "$door"
    done
    check_the_tree "${doors[@]}"
    python3 "$root/tools/summary.py" "${doors[@]}"
}
