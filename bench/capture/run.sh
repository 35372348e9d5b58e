#!/bin/sh
# The capture benchmark: the walk of a 32,767-entry tree into an archive against find on the same
# tree, whole processes, interleaved (find, walk, find, walk, ...; median of the pair-by-pair
# ratios, warm cache), then the creation window's scan against the bare walk in one process.
# Usage: bench/capture/run.sh [BUILD_DIR] [RUNS]
set -eu
build=${1:-build}
runs=${2:-40}
bench=$build/bench/capture_bench
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/tree" "$work/out" "$work/data"

"$bench" generate "$work/tree" 32767
echo "tree: $(find "$work/tree" | wc -l) paths, $(find "$work/tree" -type d | wc -l) directories"

"$bench" pairs "$work/tree" "$work/out" "$build/bench/capture_walk" "$runs"

QT_QPA_PLATFORM=offscreen "$bench" window "$work/tree" "$work/data" "$runs"
