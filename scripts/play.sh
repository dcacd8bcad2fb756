#!/usr/bin/env bash
# Sets up, builds and plays. See --help.
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)

usage() {
    cat <<'END'
Plays a media file or a timeline in the window of qrtplay.

usage: scripts/play.sh [FILE] [--output SHEET.png]

  FILE        a media file, images such as 'plate.####.exr', or a timeline (.otio, .otiod, .otioz); without one a
              sample timeline is made under build/
  --output    writes a contact sheet to this file instead of opening the window

Installs what is missing (Debian packages, as root or with sudo) and builds a release. Without a display it starts one
of its own and writes a contact sheet (build/contact-sheet.png) and a screenshot of the window while it plays
(build/screenshot.png), and prints their paths. Quick when nothing has changed.

For single frames use the program that it builds:
  scripts/with-display.sh build/release/bin/qrtplay render FILE --frames 0-99 --output 'out/frame.####.png'
END
}

fail() {
    echo "play.sh: $1" >&2
    exit "${2:-1}"
}

file=
output=
while [[ $# -gt 0 ]]; do
    case $1 in
        -h | --help)
            usage
            exit 0
            ;;
        --output)
            [[ $# -ge 2 ]] || fail '--output needs a file name' 2
            output=$2
            shift
            ;;
        --output=*) output=${1#--output=} ;;
        --)
            shift
            [[ $# -le 1 && -z $file ]] || fail "'${2-${1-}}': one file at a time" 2
            [[ $# -eq 0 ]] || file=$1
            break
            ;;
        -*) fail "'$1': not an option; see --help" 2 ;;
        *)
            [[ -z $file ]] || fail "'$1': one file at a time" 2
            file=$1
            ;;
    esac
    shift
done
# What looks like the name of numbered images is for the program to find.
[[ -z $file || -e $file || $file == *[#%@]* ]] || fail "$file: no such file"

"$root/scripts/setup.sh"

build=$root/build/release
log=$root/build/play.log
mkdir -p "$root/build"
# Runs a step of the build silently, but tells all about it when it fails.
quietly() {
    "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        fail "this failed: $*"
    }
}
if [[ ! -e $build/build.ninja || ! -x $build/bin/qrtplay ]]; then
    echo "play.sh: building a release in $build, which takes a few minutes the first time" >&2
fi
[[ -e $build/build.ninja ]] || quietly cmake -S "$root" --preset release -B "$build"
quietly cmake --build "$build" --target qrtplay

if [[ -z $file ]]; then
    file=$root/build/sample/sample.otio
    # Made anew when its recipe has changed.
    if [[ ! -e $file || $root/scripts/make-sample-timeline.sh -nt $file || $root/scripts/make-sample-clip.sh -nt $file ]]; then
        echo "play.sh: making the sample timeline $file" >&2
        "$root/scripts/make-sample-timeline.sh" "$root/build/sample"
    fi
fi

case $file in -*) file=./$file ;; esac
program=$build/bin/qrtplay
if [[ -n ${DISPLAY-} || -n ${WAYLAND_DISPLAY-} ]]; then
    [[ -n $output ]] || exec "$program" view "$file" --play
    "$program" contact-sheet "$file" "--output=$output" >/dev/null
    echo "$output"
    exit
fi

with_display=$root/scripts/with-display.sh
"$with_display" "$program" contact-sheet "$file" "--output=${output:-$root/build/contact-sheet.png}" >/dev/null
echo "${output:-$root/build/contact-sheet.png}"
[[ -z $output ]] || exit 0
"$with_display" "$program" view "$file" --play --screenshot "$root/build/screenshot.png"
echo "$root/build/screenshot.png"
