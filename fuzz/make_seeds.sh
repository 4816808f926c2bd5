#!/usr/bin/env bash
# Writes the seed corpora fuzz/corpus/<target>/ from tests/data and, when it is there,
# ../shared/corpus (see make_seeds.cpp for what each target gets). Needs the fuzz build:
#   fuzz/make_seeds.sh [BUILD_DIR]      (default build/fuzz)
# Seeds are named by their content, so a second run adds only what is new.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/fuzz}
tool="$build/fuzz/vantrel_fuzz_seeds"
[ -x "$tool" ] || { echo "make_seeds: $tool is missing; build the fuzz preset first" >&2; exit 1; }
inputs=(tests/data)
[ -d ../shared/corpus ] && inputs+=(../shared/corpus)
# The tool is instrumented like everything in the fuzz build; it keeps what it allocates until exit.
ASAN_OPTIONS=detect_leaks=0 "$tool" fuzz/corpus "${inputs[@]}"
