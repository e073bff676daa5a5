# What a host needs around it, for the scripts that play one: a sandbox, settings that name it, the DLLs registered from a
# copy beside which those settings lie. Sourced, never run; the caller sets $root and calls leave_host when it ends.

sandbox_pid=
registered_bits=
registered_folder=

# start_sandbox PROGRAM FOLDER [argument...]: sets $origin. FOLDER gets its port and what it prints.
start_sandbox() {
    local program=$1 folder=$2 line
    shift 2
    # There before the program is, which may take its time to start.
    : >"$folder/sandbox.log"
    "$program" --port 0 --port-file "$folder/port" --quiet "$@" >"$folder/sandbox.log" 2>&1 &
    sandbox_pid=$!
    for _ in $(seq 200); do
        line=$(sed -n 's/^listening on //p' "$folder/sandbox.log")
        [[ -z $line ]] || break
        kill -0 "$sandbox_pid" 2>/dev/null || break
        sleep 0.05
    done
    [[ -n $line ]] || {
        echo "the sandbox did not start: $(tail -n 3 "$folder/sandbox.log")" >&2
        return 1
    }
    origin=${line%% *}
}

# make_host_database FILE: a SQLite file with the demonstration's tables.
make_host_database() { sed 's/(max)//g' "$root/demo/schema.sql" | sqlite3 "$1"; }

# write_settings FILE [CA_FILE [PROFILE]]: every environment is the sandbox: a call meant for it must never leave this computer.
write_settings() {
    local authority=${2:+"\"private_ca_file\": \"$2\", "}
    printf '{\n  "profile": "%s",\n  "ksef": { "production": "%s", "demo": "%s", "test": "%s" },\n  "http": { %s"proxy": "direct" }\n}\n' \
        "${3:-classic}" "$origin" "$origin" "$origin" "$authority" >"$1"
}

# A window system for Wine's sake is started per program and says when it goes; only what the program prints counts.
wine_program() { "$root/tools/wine-run" "$@" 2>/dev/null; }

# register_dlls BITS BIN FOLDER: copies BIN's DLLs to FOLDER and registers those.
register_dlls() {
    local dll
    registered_bits=$1 registered_folder=$3
    mkdir -p "$3"
    cp "$2"/{Tavrix,TavrixDevAdo}.dll "$3/"
    for dll in Tavrix TavrixDevAdo; do
        wine_program "$1" regsvr32 /s "Z:$3/$dll.dll" || {
            echo "regsvr32 $dll.dll failed" >&2
            return 1
        }
    done
}

leave_host() {
    local dll
    if [[ -n $registered_bits ]]; then
        for dll in Tavrix TavrixDevAdo; do
            wine_program "$registered_bits" regsvr32 /u /s "Z:$registered_folder/$dll.dll" || true
        done
    fi
    [[ -z $sandbox_pid ]] || kill "$sandbox_pid" 2>/dev/null || true
    registered_bits= sandbox_pid=
}
