#!/usr/bin/env bash
# Writes the reference of the public headers.
set -euo pipefail

usage() {
    cat <<'USAGE'
Writes the reference of the public headers, as HTML, and prints its first page.

  scripts/docs.sh [FOLDER]

FOLDER   where it goes; build/docs without one

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

folder=$(realpath -m -- "${1:-$(dirname "${BASH_SOURCE[0]}")/../build/docs}")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
command -v doxygen >/dev/null || scripts/setup.sh

mkdir -p "$folder"
version=$(sed -nE 's/^project\(.* VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)
QRT_DOCS_VERSION=$version QRT_DOCS_FOLDER=$folder doxygen docs/Doxyfile
echo "$folder/index.html"
