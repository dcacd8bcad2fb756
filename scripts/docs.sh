#!/usr/bin/env bash
# Writes the reference of the public headers.
set -euo pipefail

usage() {
    cat <<'USAGE'
Writes the reference of the public headers, as HTML, and prints its first page.

  scripts/docs.sh [FOLDER]

FOLDER   where it goes, beside what is there; without one build/docs, which is emptied first

Exit status 0 only when Doxygen had nothing to complain about: every public name is documented.
USAGE
}

case ${1-} in
    -h | --help)
        usage
        exit 0
        ;;
    -*)
        usage >&2
        exit 2
        ;;
esac

folder=${1:+$(realpath -m -- "$1")}
cd "$(dirname "${BASH_SOURCE[0]}")/.."
command -v doxygen >/dev/null || scripts/setup.sh

if [[ -z $folder ]]; then
    folder=$PWD/build/docs
    rm -rf "$folder"  # with the pages of headers that are gone
fi
mkdir -p "$folder"
version=$(sed -nE 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
QRT_DOCS_VERSION=$version QRT_DOCS_FOLDER=$folder doxygen docs/Doxyfile
echo "$folder/index.html"
