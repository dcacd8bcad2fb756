#!/usr/bin/env bash
# Compares the kit's binary interface with what is on record: the symbols that each library exports (symbols.txt), and the
# sizes of public classes and the order of their virtual operations (slots.txt). Also checks that the libraries' names
# agree with the version of the project.
#   qrtAbi.sh check|record VERSION LIBRARY_FOLDER COMPILER
# It goes through the build: `ctest --preset dev -R qrtAbiTest`, and after an intended change
# `cmake --build --preset dev --target record-abi`.
set -euo pipefail

[[ $# -eq 4 && ($1 == check || $1 == record) ]] || {
    echo "usage: qrtAbi.sh check|record VERSION LIBRARY_FOLDER COMPILER" >&2
    exit 2
}
mode=$1
IFS=. read -r major minor _ <<<"$2"
libraries=$3
compiler=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
abi=${major}_$minor
modules=(Core Cache Composition Logger Player)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

# Our own symbols, once for each name: compilers emit destructors in two or three forms, and instantiations of the standard
# library's templates as they see fit.
listSymbols() {
    local module
    for module in "${modules[@]}"; do
        echo "[libqrt${module}_$abi.so.$major.$minor]"
        nm -D --defined-only -C -- "$libraries/libqrt${module}_$abi.so" | sed -E 's/^[0-9a-f]+ . //; s/@@.*//' |
            { grep -E '^((non-)?virtual thunk to |(vtable|typeinfo|typeinfo name) for )?QRT_' || true; } | LC_ALL=C sort -u
    done
}

# From the compiler's own description of its classes. A table begins with an offset: 0, or below it that of a further base.
listSlots() {
    (cd "$scratch" && "$compiler" -std=c++20 -fPIC -fsyntax-only -fdump-lang-class -I"$here/../../src" \
        "$here/qrtPublicHeaders.cpp")
    awk '
        /^(Class|Vtable for) / { name = $0; sub(/^(Class|Vtable for) /, "", name); shown = name ~ /^QRT_[0-9_]+::/; isTable = /^Vtable/ }
        !shown { next }
        /^Class / { class = name; next }
        /^   size=/ { print class ": " $1 " " $2; next }
        /^Vtable for / { print "virtual table of " name; next }
        isTable && /^[0-9]+ / { $1 = ""; sub(/^ \(int \(\*\)\(\.\.\.\)\)/, ""); if (!/_ZTI/) print "    " $0; next }
        /^$/ { shown = 0 }
    ' "$scratch"/*.class
}

# `grep -q` would end at the first match, and whoever still writes to it would die of that and hide the match.
checkNames() {
    local module soname
    for module in "${modules[@]}"; do
        soname=$(readelf -d "$libraries/libqrt${module}_$abi.so" | sed -nE 's/.*SONAME.*\[(.*)\]/\1/p')
        [[ $soname == "libqrt${module}_$abi.so.$major.$minor" ]] ||
            fail "the SONAME of $module is '$soname', which is not of version $2"
        if readelf -d "$libraries/libqrt${module}_$abi.so" | grep NODELETE >/dev/null ||
            nm -D --defined-only -- "$libraries/libqrt${module}_$abi.so" | grep ' u ' >/dev/null; then
            fail "$module has symbols that are unique in the process: it could not be unloaded"
        fi
    done
    if grep -ohE 'QRT_[0-9]+_[0-9]+::' "$scratch/symbols.txt" "$scratch/slots.txt" | grep -vx "QRT_$abi::" >/dev/null; then
        fail "there are names outside of the namespace QRT_$abi, which is that of version $2"
    fi
}

listSymbols >"$scratch/symbols.txt"
listSlots >"$scratch/slots.txt"
[[ $(wc -l <"$scratch/slots.txt") -gt 100 ]] || fail "'$compiler' describes no classes with -fdump-lang-class"
checkNames "$@"
for record in symbols.txt slots.txt; do
    if [[ $mode == record ]]; then
        cp "$scratch/$record" "$here/$record"
        echo "$(wc -l <"$here/$record") lines in $here/$record"
    elif ! diff -u --label "recorded $record" --label "built $record" "$here/$record" "$scratch/$record" >&2; then
        fail "the binary interface is another one (see above). Hosts that were built before would break. Where that is" \
            "intended, record it: cmake --build --preset dev --target record-abi"
    fi
done
[[ $failures -eq 0 ]]
