#!/usr/bin/env bash
# Installs what the build, the tests and the reference host need from Debian's packages.
# Quick when everything is there. Works as root or with sudo.
#   scripts/setup.sh [PRESET...]    for presets that need more than the others, that too
set -euo pipefail

packages=(
    # tools
    build-essential clang clang-format clang-tidy cppcheck cmake doxygen ninja-build pkg-config ccache python3 valgrind
    # the library
    qtbase5-dev rapidjson-dev libgl-dev libegl-dev libopengl-dev libx11-dev
    # the reference host
    libavcodec-dev libavformat-dev libavutil-dev libswresample-dev libswscale-dev libopencolorio-dev libarchive-dev
    qtmultimedia5-dev libqt5multimedia5-plugins
    # tests, benchmarks and the sample clip
    libgtest-dev libgmock-dev libbenchmark-dev libglfw3-dev libclang-rt-14-dev gcovr ffmpeg fonts-dejavu-core
    # OpenGL without a display
    xvfb xauth libgl1-mesa-dri libegl-mesa0 libglx-mesa0
)

# What a preset needs beyond that.
for preset in "$@"; do
    [[ $preset != qt6 ]] || packages+=(qt6-base-dev libqt6opengl6-dev qt6-multimedia-dev pulseaudio)
done

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
    [[ $status == "install ok installed" ]] || missing+=("$package")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || {
        echo "setup.sh: these packages are missing and installing them needs root or sudo: ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi

echo "setup.sh: installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
install() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends "${missing[@]}" >"$log" 2>&1
}
# The package lists of a fresh machine are empty or old, so a first failure is answered with an update.
if ! install; then
    if ! "${as_root[@]}" apt-get update >"$log" 2>&1 || ! install; then
        cat "$log" >&2
        echo "setup.sh: the packages could not be installed; see the messages above" >&2
        exit 1
    fi
fi
