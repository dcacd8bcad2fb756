#!/usr/bin/env bash
# Installs a build into a folder, moves that elsewhere, and checks that everything is there and works from there.
#   qrtInstallTest.sh BUILD PREFIX VERSION
set -euo pipefail

build=${1:?usage: qrtInstallTest.sh BUILD PREFIX VERSION}
prefix=$2
version=$3
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/clean-environment.sh"
abi=${version%.*}
failures=0
fail() {
    echo "FAILED: $*" >&2
    failures=$((failures + 1))
}

rm -rf "$prefix" "$prefix.made"
cmake --install "$build" --prefix "$prefix.made" >/dev/null
mv "$prefix.made" "$prefix"  # nothing that is installed may depend on where it was put first
lib=$(dirname "$(find "$prefix" -name 'libqrtPlayer*.so')")

# ---- Libraries: named by version, and they find each other without help
for module in Core Cache Composition Logger Player; do
    name=libqrt${module}_${abi/./_}.so
    soname=$(objdump -p "$lib/$name" | awk '$1 == "SONAME" { print $2 }')
    [[ $soname == "$name.$abi" ]] || fail "$name: its SONAME is '$soname'"
    [[ $(readlink "$lib/$name") == "$soname" && $(readlink "$lib/$soname") == "$name.$version" ]] ||
        fail "$name: its links do not lead to $name.$version"
    missing=$(clean ldd "$lib/$name" | grep 'not found' || true)
    [[ -z $missing ]] || fail "$name: $missing"
    [[ $(clean env PKG_CONFIG_PATH="$lib/pkgconfig" pkg-config --modversion "qrt$module") == "$version" ]] ||
        fail "qrt$module.pc does not tell version $version"
done
traces=$(grep -rlF -- "$build" "$lib/cmake" "$lib/pkgconfig" "$prefix/share" || true)
[[ -z $traces ]] || fail "these files name the build folder: $traces"

# ---- Headers: the public ones, which need nothing else
private=$(find "$prefix/include" -path '*private*' -o -name '*.cpp' -o -name 'qrtRegistration.h')
[[ -z $private ]] || fail "not for others: $private"
all=$prefix/all-headers.cpp
(cd "$prefix/include/qrt-$abi" && find . -name '*.h' | sort | sed 's|^\./\(.*\)|#include "\1"|') >"$all"
[[ $(wc -l <"$all") -gt 20 ]] || fail "only $(wc -l <"$all") headers are installed"
echo 'int main() { return QRT_0_81::Status().failure(); }' >>"$all"
clean cmake -S "$here/consumer" -B "$prefix/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DALL_HEADERS="$all" \
    -DVERSION="$version" >"$prefix/consumer.log" 2>&1 || fail "the package is not found as it should: $(cat "$prefix/consumer.log")"
clean cmake --build "$prefix/consumer" >"$prefix/consumer.log" 2>&1 || fail "the headers: $(cat "$prefix/consumer.log")"
clean "$prefix/consumer/consumer" || fail "a program that links every library does not run"

# ---- Documents: their links lead to what is installed
wrong=$(PYTHONDONTWRITEBYTECODE=1 python3 "$here/../docs/check_docs.py" --links "$prefix/share/doc") || fail "$wrong"

# ---- The program, and what the desktop knows of it
if [[ -e $prefix/bin/qrtplay ]]; then
    [[ $(clean "$prefix/bin/qrtplay" --version) == "qrtplay $version" ]] || fail "qrtplay does not tell version $version"
    page=$(zcat "$prefix/share/man/man1/qrtplay.1.gz" | sed 's/\\f[BIR]//g; s/\\-/-/g')
    for command in view render contact-sheet info self-test; do
        for option in $(clean "$prefix/bin/qrtplay" "$command" --help | grep -oE '^  --[a-z-]+'); do
            grep -qE -- "^$option( |\$)" <<<"$page" || fail "the manual page lacks $option of $command"
        done
    done
    python3 - "$prefix/share" <<'CHECK' || fail "a file for the desktop is wrong"
import configparser, sys, xml.etree.ElementTree as xml
share = sys.argv[1]
entry = configparser.ConfigParser(interpolation=None)
entry.optionxform = str
entry.read(share + "/applications/qrtplay.desktop")
assert entry["Desktop Entry"]["Exec"].split()[0] == entry["Desktop Entry"]["Icon"] == "qrtplay"
assert xml.parse(share + "/icons/hicolor/scalable/apps/qrtplay.svg").getroot().tag.endswith("svg")
types = {kind.get("type") for kind in xml.parse(share + "/mime/packages/qrtplay.xml").getroot()}
assert types and types <= set(entry["Desktop Entry"]["MimeType"].split(";")), types
CHECK
    if command -v desktop-file-validate >/dev/null; then
        desktop-file-validate "$prefix/share/applications/qrtplay.desktop" || fail "the desktop entry"
    fi
fi

[[ $failures -eq 0 ]] && echo "all installed"
exit $((failures > 0))
