#!/usr/bin/env bash
# clang-tidy over what the Linux build compiles, file by file: all of it, or the files named. ./dev tidy [FILE...]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
files=("$@")
if ((${#files[@]} == 0)); then
    mapfile -t files < <(python3 - <<'PYTHON'
import json
entries = json.load(open("build/tidy/compile_commands.json"))
print("\n".join(sorted({entry["file"] for entry in entries})))
PYTHON
    )
fi
printf '%s\0' "${files[@]}" | xargs -0 -n 1 -P "${TAVRIX_JOBS:-$(nproc)}" clang-tidy --quiet -p build/tidy
echo "clang-tidy has nothing to say about ${#files[@]} files"
