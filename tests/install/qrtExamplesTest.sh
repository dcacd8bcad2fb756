#!/usr/bin/env bash
# Builds the examples against an installed package, in one of its two ways, runs them and compares what they say.
#   qrtExamplesTest.sh cmake|pkg-config PREFIX BUILD
set -euo pipefail

way=${1:?usage: qrtExamplesTest.sh cmake|pkg-config PREFIX BUILD}
prefix=$2
build=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/clean-environment.sh"
examples=$here/../../examples
warnings='-O0 -Wall -Wextra -Wpedantic -Werror'
failures=0

rm -rf "$build"
mkdir -p "$build"
case $way in
    cmake)
        clean cmake -S "$examples" -B "$build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS="$warnings" \
            -DCMAKE_CXX_COMPILER_LAUNCHER="$compiler_cache" >"$build/build.log" 2>&1 &&
            clean cmake --build "$build" -j2 >>"$build/build.log" 2>&1
        ;;
    pkg-config)
        lib=$(dirname "$(find "$prefix" -name 'libqrtPlayer*.so')")
        clean env PKG_CONFIG_PATH="$lib/pkgconfig" LDFLAGS="-Wl,-rpath,$lib" make -C "$examples" -j2 OUT="$build" \
            CXX="$compiler_cache g++" CXXFLAGS="$warnings" >"$build/build.log" 2>&1
        ;;
esac || {
    cat "$build/build.log" >&2
    exit 1
}

# expect_success PROGRAM [ARGUMENT...]: it ends well and writes what expected/PROGRAM.txt says on standard output.
expect_success() {
    local program=$1
    shift
    if ! (cd "$build" && clean timeout 60 "./$program" "$@") >"$build/$program.said"; then
        echo "FAILED: $program $*" >&2
        failures=$((failures + 1))
    elif ! diff "$here/expected/$program.txt" "$build/$program.said" >&2; then
        echo "FAILED: $program $* says something else" >&2
        failures=$((failures + 1))
    fi
}

# expect_failure PROGRAM [ARGUMENT...]: it ends with 1 and says why on standard error.
expect_failure() {
    local status=0 program=$1
    shift
    (cd "$build" && clean timeout 60 "./$program" "$@") >/dev/null 2>"$build/$program.complaint" || status=$?
    if [[ $status -ne 1 ]] || ! grep -q "^$program: $1 " "$build/$program.complaint"; then
        echo "FAILED: $program $* ends with $status and says: $(<"$build/$program.complaint")" >&2
        failures=$((failures + 1))
    fi
}

# Two seconds of an A, half as loud as can be, in both channels.
check_tone() {
    python3 - "$build/tone.wav" <<'CHECK'
import struct, sys, wave
file = wave.open(sys.argv[1])
assert (file.getnchannels(), file.getsampwidth(), file.getframerate(), file.getnframes()) == (2, 2, 48000, 96000)
samples = struct.unpack("<192000h", file.readframes(96000))
left = samples[0::2]
assert left == samples[1::2], "the channels differ"
assert max(left) == 16384 and min(left) == -16384, (min(left), max(left))
rises = sum(before < 0 <= after for before, after in zip(left, left[1:]))
assert abs(rises - 880) <= 1, rises
CHECK
}

expect_success minimal_host 3
expect_success qt_widget_host 9
expect_success glfw_host 9
expect_success external_segment_host
expect_success audio_host tone.wav
check_tone || failures=$((failures + 1))
expect_failure audio_host /dev/full
expect_failure audio_host nowhere/tone.wav
exit $((failures > 0))
