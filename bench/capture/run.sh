#!/bin/sh
# The capture benchmark: the walk of a 32,767-entry tree into an archive, against find on the
# same tree (ratio of medians, hyperfine, warm cache), then the creation window's scan against
# the bare walk in one process. Usage: bench/capture/run.sh [BUILD_DIR] [RUNS]
set -eu
build=${1:-build}
runs=${2:-20}
bench=$build/bench/capture_bench
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/tree" "$work/out" "$work/data"

"$bench" generate "$work/tree" 32767
echo "tree: $(find "$work/tree" | wc -l) paths, $(find "$work/tree" -type d | wc -l) directories"

hyperfine --warmup 3 --runs "$runs" --export-json "$work/walk.json" \
    -n find "find '$work/tree' -fprint '$work/out/find.txt'" \
    -n FileFinder "'$build/bench/capture_walk' '$work/tree' '$work/out'"
jq -r '.results as $r | "FileFinder / find (medians): \($r[1].median / $r[0].median * 1000 | round / 1000)"' \
    "$work/walk.json"

QT_QPA_PLATFORM=offscreen "$bench" window "$work/tree" "$work/data" "$runs"
