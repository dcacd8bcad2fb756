#!/usr/bin/env bash
# Measures which lines of src/ the tests reach: runs every test of the library and prints a table; the details are left in
# build/coverage/report/index.html.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/setup.sh
command -v gcovr >/dev/null || {
    echo "coverage.sh: gcovr is missing; install Debian's package of that name" >&2
    exit 1
}
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
scripts/test.sh coverage
mkdir -p build/coverage/report
gcovr --root . --filter 'src/' --exclude-throw-branches --print-summary --sort-uncovered \
    --html-details build/coverage/report/index.html --txt - build/coverage
