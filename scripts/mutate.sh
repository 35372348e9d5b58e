#!/usr/bin/env bash
# Judges the tests with a sample of faults: applies each fault of a list (by default
# scripts/mutants.txt) alone to a copy of the project, rebuilds that copy incrementally, runs every
# test and reports the faults no test caught. A report, not a gate: it exits 0 whatever it finds.
#
# Usage: scripts/mutate.sh [--list FILE] [--work DIR] [--only N[,N...]] [--check]
#   --list FILE  the faults, one a line: `path | text to find | replacement` (see scripts/mutants.txt)
#   --work DIR   where the copy and its build live (default /tmp/kalvex2-mutate); kept between runs,
#                so only the first run builds everything
#   --only N     applies only the fault(s) numbered N (as the report numbers them, from 1)
#   --check      only checks that each fault's text occurs once in the working tree (no build)
#
# The copy is the working tree as it is (without build*/ and .git), synchronised at each run: a file
# is copied again only when it changed, so the build stays incremental. The tests that already fail
# without any fault are named and left out of the runs of the faults.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
list="$here/scripts/mutants.txt"
work=/tmp/kalvex2-mutate
only=""
check=""

while (($#)); do
    case "$1" in
        --list) list=$(realpath "$2"); shift 2 ;;
        --work) work=$(realpath -m "$2"); shift 2 ;;
        --only) only=",$2,"; shift 2 ;;
        --check) check=1; shift ;;
        -h|--help) sed -n '2,15s/^# \{0,1\}//p' "$0"; exit 0 ;;
        *) echo "mutate.sh: unknown argument $1 (see --help)" >&2; exit 2 ;;
    esac
done
[[ -f "$list" ]] || { echo "mutate.sh: no list $list" >&2; exit 2; }

start=$SECONDS
src="$work/src"
build="$work/build"
logs="$work/logs"

# --------------------------------------------------------------- the copy
# Copies the files that differ (with a fresh time, so ninja sees them), removes those that are gone.
sync_sources() {
    local -A present=()
    local f
    while IFS= read -r -d '' f; do
        f=${f#./}
        present["$f"]=1
        if [[ -L "$here/$f" ]] || ! cmp -s "$here/$f" "$src/$f"; then
            mkdir -p "$src/$(dirname "$f")"
            rm -f "$src/$f"
            cp -P "$here/$f" "$src/$f"
        fi
    done < <(cd "$here" && find . \( -path ./.git -o -path './build*' -o -path ./.cache \) -prune \
                 -o \( -type f -o -type l \) -print0)
    while IFS= read -r -d '' f; do
        f=${f#./}
        [[ -n "${present[$f]:-}" ]] || rm -f "$src/$f"
    done < <(cd "$src" && find . \( -type f -o -type l \) -print0)
}

# Builds the copy; 0 when it built.
build_copy() { ninja -C "$build" >"$1" 2>&1; }

# Runs the tests (all but those failing without fault), stopping at the first failure; prints the
# name of the first failing test, nothing when every test passed.
run_tests() {
    local log=$1
    local -a exclude=()
    [[ -n "$broken" ]] && exclude=(-E "^($broken)\$")
    (cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j2 --timeout 60 --stop-on-failure \
        "${exclude[@]}" >"$log" 2>&1) || true
    # "  3/31 Test  #5: tst_name ......***Failed  0.1 sec" (or ***Timeout, Exception...)
    sed -nE 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+) .*(\*\*\*|Exception|Not Run).*/\1/p' "$log" |
        head -n 1
    if ! grep -qE 'tests passed|Test +#' "$log"; then echo "(ctest: see $log)"; fi
}

# --------------------------------------------------------------- the faults
# Writes a fault into a file (or, without a replacement, only looks): returns 0 when its text
# occurs exactly once, else prints why not and returns 1.
replace_once() {
    perl -e '
        my ($file, $from, $to) = @ARGV;
        open(my $in, "<:raw", $file) or do { print "no such file"; exit 1 };
        local $/; my $text = <$in>; close $in;
        my ($count, $at, $where) = (0, 0, -1);
        while (length $from && ($at = index($text, $from, $at)) >= 0) { $where = $at if !$count++; $at += length $from; }
        if ($count != 1) { print $count ? "found $count times" : "text not found"; exit 1 }
        exit 0 if @ARGV < 3;
        substr($text, $where, length $from) = $to;
        open(my $out, ">:raw", $file) or die "$file: $!\n"; print $out $text; close $out or die "$file: $!\n";
    ' -- "$@"
}

# The line of the file where a text starts (for the report).
line_of() { perl -e 'local $/; open(my $f, "<:raw", $ARGV[0]) or exit; my $t = <$f>; my $i = index($t, $ARGV[1]);
                     print $i < 0 ? "?" : 1 + (substr($t, 0, $i) =~ tr/\n//)' -- "$1" "$2"; }

# Reads a line of the list into path, from and to; returns 1 for a blank line or a comment. Sets
# malformed when the line is not `path | text | replacement`.
parse_line() {
    local line=${1%$'\r'}
    [[ "$line" =~ ^[[:space:]]*(#|$) ]] && return 1
    [[ "$line" == *" |" ]] && line="$line " # an empty replacement, its blank trimmed by an editor
    # The path ends at the first " | ", the replacement starts after the last: the text to find
    # may hold " | " (flags or'ed together), the replacement may not.
    path=${line%% | *}
    path=${path#"${path%%[![:space:]]*}"}
    local rest=${line#* | }
    from=${rest% | *}
    to=${rest##* | }
    malformed=""
    if [[ "$path" == "$line" || "$from" == "$rest" || -z "$from" ]]; then
        malformed=1
    fi
    return 0
}
malformed_text='the line needs `path | text | replacement`'
mapfile -t lines <"$list" # read at once: the list may be edited while a run goes on

if [[ -n "$check" ]]; then
    number=0 bad=0
    for line in "${lines[@]}"; do
        parse_line "$line" || continue
        number=$((number + 1))
        if [[ -n "$malformed" ]]; then
            printf '%3d  %s: not applied (%s)\n' "$number" "$path" "$malformed_text"
            bad=$((bad + 1))
        elif ! why=$(replace_once "$here/$path" "$from"); then
            printf '%3d  %s: not applied (%s)\n' "$number" "$path" "$why"
            bad=$((bad + 1))
        fi
    done
    echo "$number faults, $bad not applied"
    exit 0
fi

mkdir -p "$src" "$build" "$logs"
rm -f "$logs"/*.log
echo "Copying the project into $src"
sync_sources
if [[ ! -f "$build/build.ninja" ]]; then
    echo "Configuring $build (once)"
    cmake -S "$src" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >"$logs/configure.log" 2>&1 ||
        { cat "$logs/configure.log"; echo "mutate.sh: the copy does not configure" >&2; exit 1; }
fi

echo "Building the copy"
build_copy "$logs/build.log" || { tail -n 30 "$logs/build.log"; echo "mutate.sh: the copy does not build" >&2; exit 1; }

echo "Running the tests without fault"
broken=""
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest -j2 --timeout 60 >"$logs/baseline.log" 2>&1) || true
broken=$(sed -nE 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: ([^ ]+) .*(\*\*\*|Exception|Not Run).*/\1/p' \
             "$logs/baseline.log" | paste -sd '|')
grep -qE 'Test +#' "$logs/baseline.log" || { cat "$logs/baseline.log"; echo "mutate.sh: ctest found no test" >&2; exit 1; }
if [[ -n "$broken" ]]; then
    echo "These tests fail without any fault and are left out: ${broken//|/, }"
fi
echo

mutated=""      # the file holding a fault right now, restored on any exit
restore() { [[ -z "$mutated" ]] || cp "$work/original" "$src/$mutated"; mutated=""; }
trap restore EXIT
trap 'exit 130' INT TERM

caught=0 survived=0 notapplied=0 nobuild=0 number=0
survivors=()
for line in "${lines[@]}"; do
    parse_line "$line" || continue
    number=$((number + 1))
    [[ -z "$only" || "$only" == *",$number,"* ]] || continue
    label=$(printf '%3d  %s' "$number" "$path")
    if [[ -n "$malformed" ]]; then
        printf '%s: not applied (%s)\n' "$label" "$malformed_text"
        notapplied=$((notapplied + 1)); continue
    fi
    if [[ ! -f "$src/$path" ]]; then
        printf '%s: not applied (no such file)\n' "$label"
        notapplied=$((notapplied + 1)); continue
    fi
    label="$label:$(line_of "$src/$path" "$from")"
    cp "$src/$path" "$work/original"
    mutated=$path
    if ! why=$(replace_once "$src/$path" "$from" "$to"); then
        restore
        printf '%s: not applied (%s)\n' "$label" "$why"
        notapplied=$((notapplied + 1)); continue
    fi
    if ! build_copy "$logs/$number-build.log"; then
        restore
        printf '%s: did not build (%s)\n' "$label" "$logs/$number-build.log"
        nobuild=$((nobuild + 1)); continue
    fi
    failed=$(run_tests "$logs/$number.log")
    restore    # rebuilt with the next fault
    if [[ -n "$failed" ]]; then
        printf '%s: caught by %s\n' "$label" "$failed"
        caught=$((caught + 1))
    else
        printf '%s: SURVIVED  [%s] -> [%s]\n' "$label" "$from" "$to"
        survived=$((survived + 1))
        survivors+=("$number")
    fi
done

echo
summary="$caught caught, $survived survived"
((notapplied)) && summary="$summary, $notapplied not applied"
((nobuild)) && summary="$summary, $nobuild did not build"
((${#survivors[@]})) && summary="$summary (survivors: ${survivors[*]})"
elapsed=$((SECONDS - start))
echo "$summary; $((elapsed / 60)) min $((elapsed % 60)) s"
exit 0
