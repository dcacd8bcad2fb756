#!/usr/bin/env bash
# Makes the Debian packages and, with --try, installs, uses and purges them.
set -euo pipefail

usage() {
    cat <<'USAGE'
Makes the Debian packages of the libraries, of what hosts are built with, and of qrtplay in build/package/packages.

  scripts/package.sh          makes them
  scripts/package.sh --try    makes them, installs them with apt, builds and runs an example, runs qrtplay, and purges
                              them; needs root, and a system on which none of them is installed
USAGE
}

say() { echo "package.sh: $*"; }
die() {
    echo "package.sh: $*" >&2
    exit 1
}

names=()  # of the packages, once they are made

is_installed() { [[ $(dpkg-query -W -f '${Status}' "$1" 2>/dev/null || true) == *" ok installed" ]]; }

make_packages() {
    if ! { cmake --preset package && cmake --build --preset package; } >"$log" 2>&1; then
        cat "$log" >&2
        die "the build failed"
    fi
    rm -rf build/package/packages
    (cd build/package && cpack) >"$log" 2>&1 || {
        cat "$log" >&2
        die "the packages could not be made"
    }
    rm -rf build/package/packages/_CPack_Packages
    local file
    for file in build/package/packages/*.deb; do
        names+=("$(dpkg-deb -f "$file" Package)")
        echo "$file"
    done
}

# Purges those that are there, be it unpacked only; apt knows nothing of the others.
purge() {
    local name there=()
    for name in "${names[@]}"; do
        case $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null || true) in
            "" | not-installed) ;;
            *) there+=("$name") ;;
        esac
    done
    [[ ${#there[@]} -gt 0 ]] || return 0
    DEBIAN_FRONTEND=noninteractive apt-get purge -y "${there[@]}" >"$log" 2>&1 || {
        cat "$log" >&2
        die "they could not be purged"
    }
}

try_packages() {
    local name scratch=$1
    [[ $(id -u) -eq 0 ]] || die "--try needs root"
    for name in "${names[@]}"; do
        is_installed "$name" && die "$name is installed already; purge it first"
    done
    say "installing"
    trap '(purge) || true; rm -rf "$scratch"' EXIT  # whatever becomes of the purge
    DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends ./build/package/packages/*.deb >"$log" 2>&1 || {
        cat "$log" >&2
        die "they could not be installed"
    }
    for name in "${names[@]}"; do
        is_installed "$name" || die "$name is not installed"
    done

    say "using"
    [[ $(command -v qrtplay) == /usr/bin/qrtplay ]] || die "there is no qrtplay"
    (cd / && "$OLDPWD/scripts/with-display.sh" qrtplay self-test) || die "qrtplay self-test failed"
    make -C examples "$scratch/minimal_host" OUT="$scratch" >"$log" 2>&1 || {
        cat "$log" >&2
        die "an example does not build"
    }
    scripts/with-display.sh "$scratch/minimal_host" 3 || die "an example does not run"

    say "purging"
    trap 'rm -rf "$scratch"' EXIT
    purge
    for name in "${names[@]}"; do
        [[ -z $(dpkg-query -W -f '${Status}' "$name" 2>/dev/null) ]] || die "$name has left something behind"
    done
    local rest
    rest=$(find /usr /etc /var/lib/dpkg/info -name '*qrtplay*' -o -name 'libqrt*_0_81*' -o -name 'qrt-0.81' 2>/dev/null || true)
    [[ -z $rest ]] || die "left behind: $rest"
    say "installed, used and purged"
}

cd "$(dirname "${BASH_SOURCE[0]}")/.."
scratch=$(mktemp -d)
log=$scratch/log
trap 'rm -rf "$scratch"' EXIT
case ${1:-} in
    "")
        scripts/setup.sh
        make_packages
        ;;
    --try)
        # One after the other: what stands before "&&" goes on after a failure within it.
        scripts/setup.sh
        make_packages
        try_packages "$scratch"
        ;;
    -h | --help) usage ;;
    *)
        usage >&2
        exit 2
        ;;
esac
