#!/usr/bin/env bash
# Sets up, builds a release and runs the benchmarks. See --help.
set -euo pipefail

usage() {
    cat <<'USAGE'
Measures what the engine and its host cost, and prints one table with each figure beside its goal.

  scripts/bench.sh [--quick] [--record] [NAME...]

  NAME       a group of benchmarks, e.g. cachedFrame; without one, all. A wrong name prints those that there are.
  --quick    fewer turns: a few minutes instead of half an hour, and noisier figures
  --record   keeps the figures in benchmarks/results/ and the table in docs/performance.md; a full run, and of a program
             all groups or none

Sets up everything and builds by itself. Figures are ratios within one run where they can be; for the rest, and for the
99th percentiles, let the machine be quiet. The figures lie in build/release/figures/ as JSON, a file for each program.
Exit status: 0 when everything ran, whether or not the goals were met; 1 when something failed; 2 for a wrong command
line.
USAGE
}

fail() {
    echo "bench.sh: $1" >&2
    exit "${2:-1}"
}

quick=
record=
names=()
for argument in "$@"; do
    case $argument in
        -h | --help)
            usage
            exit 0
            ;;
        --quick) quick=yes ;;
        --record) record=yes ;;
        -*) fail "unknown option '$argument'; try --help" 2 ;;
        *) names+=("$argument") ;;
    esac
done
[[ -z $record || -z $quick ]] || fail "only a full run is recorded" 2

exec </dev/null
cd "$(dirname "${BASH_SOURCE[0]}")/.."
trap 'exit 130' INT
trap 'exit 143' TERM

scripts/setup.sh
plan=$(benchmarks/figures.py plan ${record:+--whole} "${names[@]}") || exit $?

figures=build/release/figures
mkdir -p "$figures"
build() {
    if [[ ! -f build/release/build.ninja || CMakePresets.json -nt build/release/build.ninja ]]; then
        cmake --preset release || return
    fi
    cmake --build --preset release
}
echo "bench.sh: building"
if ! build >"$figures/build.log" 2>&1; then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$figures/build.log" >&2 || true
    fail "could not build; see the messages above"
fi

# Runs one program; its own messages only matter when it fails.
measure() {
    local program=$1 filter=$2 file=$3 command
    if [[ $program == qrtHostBenchmark ]]; then
        command=("build/release/bin/$program" --output "$file")
        [[ -z $quick ]] || command+=(--rounds 1 --clips h264-24)
    else
        command=("build/release/bin/$program" "--benchmark_filter=$filter" "--benchmark_out=$file"
            --benchmark_out_format=json)
        [[ -z $quick ]] || command=(env QRT_BENCHMARK_QUICK=1 "${command[@]}")
    fi
    scripts/with-display.sh "${command[@]}" >"$figures/$program.log" 2>&1
}

files=()
while IFS=$'\t' read -r program filter; do
    if [[ ! -x build/release/bin/$program ]]; then
        echo "bench.sh: $program was not built: left out"
        continue
    fi
    echo "bench.sh: running $program"
    file=$figures/$program.json
    rm -f "$file"
    if ! measure "$program" "$filter" "$file" || [[ ! -s $file ]]; then
        tail -n 20 "$figures/$program.log" >&2
        fail "$program failed; see the messages above"
    fi
    files+=("$file")
done <<<"$plan"
[[ ${#files[@]} -gt 0 ]] || fail "there is nothing to run"

echo
benchmarks/figures.py table "${files[@]}"
[[ -z $record ]] || benchmarks/figures.py record "${files[@]}"
