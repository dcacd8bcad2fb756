#!/usr/bin/env bash
# Sets up, builds and runs every test. Quick when nothing changed.
set -uo pipefail

default_presets=(lint dev asan tsan fuzz)
usage() {
    cat <<'USAGE'
Sets up, builds and runs every test.

  scripts/test.sh [PRESET...]

PRESET is one of the test presets of CMakePresets.json; each has its build in build/PRESET:
  lint    static checks: clang-tidy, cppcheck, clang-format, includes; the quickest to fail
  dev     assertions on: the quick local loop
  qt6     the same with Qt 6, whose packages are installed for it; only when it is named
  asan    AddressSanitizer with LeakSanitizer, and UndefinedBehaviorSanitizer
  tsan    ThreadSanitizer
  fuzz    the fuzz targets, each for 45 seconds, with Clang
Without one, all but qt6 are run. Exit status 0 only when all of them passed; one that fails does not stop the others.
USAGE
}

say() { echo "test.sh: $*"; }
complain() { echo "test.sh: $*" >&2; }

# Prints a log without the lines that only tell how far the build has come.
show_log() { grep -vE '^\[[0-9]+/[0-9]+\] ' "$1" >&2; }

configure() {
    local preset=$1 log=$2
    # The build itself notices changed CMakeLists.txt files, but not a changed preset.
    local made=build/$preset/build.ninja
    [[ -f $made && ! CMakePresets.json -nt $made ]] && return 0
    say "$preset: configuring"
    cmake --preset "$preset" >"$log" 2>&1
}

build() {
    local preset=$1 log=$2
    say "$preset: building"
    cmake --build --preset "$preset" >"$log" 2>&1
}

run_tests() {
    local preset=$1 log=$2 launcher=()
    # The sanitizers of this compiler generation fail at random where the kernel spreads addresses over more than 28
    # bits; without that spreading they never do.
    if [[ $preset != dev ]] && setarch "$(uname -m)" -R true 2>/dev/null; then
        launcher=(setarch "$(uname -m)" -R)
    fi
    say "$preset: testing"
    "${launcher[@]}" ctest --preset "$preset" --no-tests=error 2>&1 | tee "$log"
    return "${PIPESTATUS[0]}"
}

# What the tests of a preset came to, in one line: programs by CTest, cases by GoogleTest.
count_tests() {
    local preset=$1 log=$2 cases=build/$1/Testing/Temporary/LastTest.log
    awk '/tests passed, .* out of [0-9]+/ { printf "%d of %d test programs passed", $NF - $4, $NF }' "$log"
    [[ -f $cases ]] && awk '
        /^\[  PASSED  \] [0-9]+ tests?\./ { passed += $4 }
        /^\[  SKIPPED \] [0-9]+ tests?, listed/ { skipped += $4 }
        /^ ?[0-9]+ FAILED TESTS?$/ { failed += $1 }
        END {
            printf "; cases: %d passed", passed
            if (failed) printf ", %d failed", failed
            if (skipped) printf ", %d skipped", skipped
        }' "$cases"
}

# Configures, builds and tests one preset; leaves what became of it in $outcome.
run_preset() {
    local preset=$1 logs=build/$1/test-logs step
    mkdir -p "$logs"
    for step in configure build; do
        if ! "$step" "$preset" "$logs/$step.log"; then
            show_log "$logs/$step.log"
            outcome="FAILED  could not $step"
            complain "$preset: could not $step; see the messages above or $logs/$step.log"
            return 1
        fi
    done
    local result=passed
    run_tests "$preset" "$logs/test.log" || result=FAILED
    outcome="$result  $(count_tests "$preset" "$logs/test.log")"
    [[ $result == passed ]]
}

for argument in "$@"; do
    case $argument in
        -h | --help)
            usage
            exit 0
            ;;
        -*)
            complain "unknown option '$argument'; try --help"
            exit 2
            ;;
    esac
done

exec </dev/null  # nothing here asks questions, and there may be no standard input at all
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
trap 'exit 130' INT
trap 'exit 143' TERM

scripts/setup.sh "$@" || exit 1

presets=("$@")
[[ $# -eq 0 ]] && presets=("${default_presets[@]}")
known=$(ctest --list-presets | sed -n 's/^ *"\([^"]*\)".*/\1/p')
for preset in "${presets[@]}"; do
    if ! grep -qxF -- "$preset" <<<"$known"; then
        complain "no test preset named '$preset'; there are: ${known//$'\n'/, }"
        exit 2
    fi
done

table=()
status=0
for preset in "${presets[@]}"; do
    outcome=
    run_preset "$preset" || status=1
    table+=("$(printf '%-8s%s' "$preset" "$outcome")")
done

echo
printf '%s\n' "${table[@]}"
exit "$status"
