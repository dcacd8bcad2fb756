#!/usr/bin/env bash
# Runs the random tests of the engine for as long as it is told.
set -uo pipefail

default_presets=(dev asan tsan)
usage() {
    cat <<'USAGE'
Runs the random tests of the engine for as long as it is told: eight hosts that call anything of a player whose graph
engine and segments fail now and then, and the engine beside a model of it.

  scripts/soak.sh MINUTES [--seed N] [--sequences N] [PRESET...]

MINUTES      how long the hosts call, for each preset
--seed N     where the random numbers begin; another one each time without it. The same seed makes the same calls and
             the same sequences; how threads meet is not repeated.
--sequences  how many sequences of the model are compared for each preset but tsan, where there is one thread only:
             100000 without it; 0 for none
PRESET       dev, asan or tsan; all three without one

Exit status 0 only when no rule was broken.
USAGE
}

complain() { echo "soak.sh: $*" >&2; }
fail_usage() {
    complain "$*; try --help"
    exit 2
}

is_number() { [[ $1 =~ ^[0-9]{1,9}$ ]]; }
plain_number() { echo $((10#$1)); }  # 08 is 8, not an octal number

minutes=
seed=$((RANDOM * 32768 + RANDOM))
sequences=100000
presets=()
while [[ $# -gt 0 ]]; do
    case $1 in
        -h | --help)
            usage
            exit 0
            ;;
        --seed | --sequences)
            is_number "${2-}" || fail_usage "$1 needs a number"
            declare "${1#--}=$(plain_number "$2")"
            shift
            ;;
        -*) fail_usage "unknown option '$1'" ;;
        *)
            if [[ -z $minutes ]]; then
                is_number "$1" || fail_usage "'$1' is no number of minutes"
                minutes=$(plain_number "$1")
            elif [[ " ${default_presets[*]} " == *" $1 "* ]]; then
                presets+=("$1")
            else
                fail_usage "no preset '$1' to soak; there are: ${default_presets[*]}"
            fi
            ;;
    esac
    shift
done
[[ -n $minutes ]] || fail_usage "how many minutes?"
[[ ${#presets[@]} -eq 0 ]] && presets=("${default_presets[@]}")

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
trap 'exit 130' INT
trap 'exit 143' TERM

build() {
    local preset=$1 log targets=(qrtStressTest)
    [[ $preset == tsan ]] || targets+=(qrtEngineModelTest)
    log=$(mktemp)
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --target "${targets[@]}"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        return 1
    fi
    rm -f "$log"
}

# Runs one test of CTest, which knows what the sanitizers have to be told, and shows what it says of itself.
run_test() {
    local preset=$1 test=$2 timeout=$3 launcher=() log status
    log=$(mktemp)
    # The sanitizers of this compiler generation fail at random where the kernel spreads addresses over more than 28 bits.
    setarch "$(uname -m)" -R true 2>/dev/null && launcher=(setarch "$(uname -m)" -R)
    "${launcher[@]}" ctest --preset "$preset" -R "^$test\$" --no-tests=error --verbose --timeout "$timeout" >"$log" 2>&1
    status=$?
    sed -n "s/^[0-9]*: \(\(stress\|model\): .*\)/$preset: \1/p" "$log"
    if [[ $status -ne 0 ]]; then
        cat "$log" >&2
        complain "$preset: $test failed; to repeat: scripts/soak.sh $minutes --seed $seed --sequences $sequences $preset"
    fi
    rm -f "$log"
    return "$status"
}

echo "soak.sh: seed $seed, $minutes minutes each: ${presets[*]}"
export QRT_STRESS_SEED=$seed QRT_STRESS_SECONDS=$((minutes * 60)) QRT_MODEL_SEED=$seed QRT_MODEL_SEQUENCES=$sequences
status=0
for preset in "${presets[@]}"; do
    build "$preset" || {
        complain "$preset: could not be built"
        status=1
        continue
    }
    run_test "$preset" qrtStressTest $((minutes * 60 + 900)) || status=1
    [[ $preset == tsan || $sequences -eq 0 ]] || run_test "$preset" qrtEngineModelTest $((900 + sequences / 10)) || status=1
done
if [[ $status -eq 0 ]]; then
    echo "soak.sh: no rule was broken"
else
    complain "a rule was broken"
fi
exit "$status"
