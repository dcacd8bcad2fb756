#!/usr/bin/env bash
# Checks what the player library exports: everything of its two public classes and nothing else.
#   qrtSymbolTableTest.sh LIBRARY
set -euo pipefail

library=${1:?usage: qrtSymbolTableTest.sh LIBRARY}
[[ -f $library ]] || {
    echo "no such library: $library" >&2
    exit 2
}
symbols=$(nm -D --defined-only -C -- "$library" | sed -E 's/^[0-9a-f]+ . //')
failures=0
fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# A name ends at a bracket or at the end, so that PlayerImpl or PlayParamsPrivate are no part of the public classes.
class='QRT_0_81::(Player|PlayParams)'
allowed="^($class::[~A-Za-z_=!<>]+\\(.*\\)( const)?|(vtable|typeinfo|typeinfo name) for $class\
|(non-virtual|virtual) thunk to $class::[~A-Za-z_]+\\(.*\\)( const)?)(@@.*)?\$"
others=$(grep -Ev "$allowed" <<<"$symbols" || true)
[[ -z $others ]] || fail "exported although it is no symbol of Player or PlayParams:"$'\n'"$others"

expect() { grep -qF -- "$1" <<<"$symbols" || fail "not exported: $1"; }
for name in Player PlayParams; do
    for kind in vtable typeinfo 'typeinfo name'; do
        grep -qE "^$kind for QRT_0_81::$name(@@.*)?\$" <<<"$symbols" || fail "not exported: $kind for $name"
    done
    expect "QRT_0_81::$name::create("
    expect "QRT_0_81::$name::~$name()"
done
expect 'non-virtual thunk to QRT_0_81::Player::~Player()'  # hosts destroy players through their second base, too

# Every operation that the header of a class declares virtual or static is there for hosts to call or derive from.
for operation in setPref getPref getPrefs initialize uninitialize setComposition updateComposition isVideoBufferReady \
    getVideoBuffer fillAudioBuffer startProducing stopProducing setVideoResolution getVideoResolution \
    setVideoFrameRate getVideoFrameRate setDefaultSourceVideoFrameRate getDefaultSourceVideoFrameRate \
    setExternalSegmentCacheConstraint getExternalSegmentCacheConstraint setAudioFormat getAudioFormat setRamOutputs \
    getRamOutputs getCacheStats addObserver removeObserver getTokenResolver; do
    expect "QRT_0_81::Player::$operation("
done
for operation in clone 'operator=' 'operator==' getCurrentFrame getStartFrame getEndFrame getFrameRate getStep \
    getPlayMode getProductionMode setCurrentFrame setStartFrame setEndFrame setStep setPlayMode setProductionMode \
    getFrame next seek toJson fromJson; do
    expect "QRT_0_81::PlayParams::$operation("
done

[[ $failures -eq 0 ]] || exit 1
echo "$(wc -l <<<"$symbols") symbols, all of Player and PlayParams"
