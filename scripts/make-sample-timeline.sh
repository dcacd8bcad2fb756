#!/usr/bin/env bash
# Makes a small sample timeline with its media: see --help.
set -euo pipefail

case ${1-} in
    -h | --help)
        cat <<'END'
usage: make-sample-timeline.sh FOLDER

Makes FOLDER/sample.otio, thirteen seconds at 24 frames/s, and the media that it plays: bars, a leader and a title that the
player renders itself, two clips of different rates with a dissolve between them, one of them again at double speed and
backwards, numbered images with alpha on a second video track, and two sound tracks.
END
        exit 0
        ;;
    '')
        echo 'usage: make-sample-timeline.sh FOLDER' >&2
        exit 2
        ;;
esac
folder=$1
scripts=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
font=/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf

fail() {
    echo "make-sample-timeline.sh: $1" >&2
    exit 1
}
command -v ffmpeg >/dev/null || fail "ffmpeg is missing; scripts/setup.sh installs it"
[[ -e $font ]] || fail "the font $font is missing; scripts/setup.sh installs it"

# Made beside its place and moved when whole.
mkdir -p "$(dirname "$folder")"
part=$(mktemp -d "$folder.XXXXXX")
chmod 755 "$part"
trap 'rm -rf "$part"' EXIT
make_media() {
    ffmpeg -hide_banner -loglevel error -nostdin -y "$@" || fail "ffmpeg could not make $folder"
}

"$scripts/make-sample-clip.sh" "$part/sky.mp4"

label="fontfile=$font:fontcolor=white:box=1:boxcolor=black@0.75:boxborderw=12:x=(w-text_w)/2"
make_media -f lavfi -i "mandelbrot=size=640x360:rate=25:start_scale=0.4:end_scale=0.02:end_pts=150" \
    -vf "drawtext=$label:fontsize=96:y=96:text='%{frame_num}',format=yuv420p" -frames:v 150 \
    -c:v libx264 -preset medium -crf 22 -bf 3 -g 50 \
    -color_range tv -colorspace bt709 -color_primaries bt709 -color_trc bt709 "$part/fractal.mp4"

# A ball with a soft edge that rolls in from the left; transparent around it.
mkdir "$part/ball"
make_media -f lavfi -i "color=c=0xffb703:size=640x360:rate=24:duration=3,format=rgba,geq=r=255:g='183-60*hypot(X-N*9,Y-280)/60':b=3:a='255*clip((60-hypot(X-N*9,Y-280))/4,0,1)'" \
    -start_number 1001 "$part/ball/ball.%04d.png"

make_media -f lavfi -i "aevalsrc='0.12*sin(2*PI*110*t)*(0.6+0.4*sin(2*PI*2*t))|0.12*sin(2*PI*165*t)*(0.6+0.4*cos(2*PI*2*t))':sample_rate=48000:duration=13" \
    "$part/hum.wav"

# What the timeline is made of, in the words of OpenTimelineIO.
time_of() { echo "{\"OTIO_SCHEMA\": \"RationalTime.1\", \"rate\": $2, \"value\": $1}"; }
range_of() { echo "{\"OTIO_SCHEMA\": \"TimeRange.1\", \"start_time\": $(time_of "$1" "$3"), \"duration\": $(time_of "$2" "$3")}"; }
file() { echo "{\"OTIO_SCHEMA\": \"ExternalReference.1\", \"target_url\": \"$1\", \"available_range\": $(range_of 0 "$2" "$3")}"; }
generator() { echo "{\"OTIO_SCHEMA\": \"GeneratorReference.1\", \"generator_kind\": \"$1\", \"parameters\": $3, \"available_range\": $(range_of 0 "$2" 24)}"; }
clip() { echo "{\"OTIO_SCHEMA\": \"Clip.1\", \"name\": \"$1\", \"source_range\": $2, \"media_reference\": $3, \"effects\": [${4-}]}"; }
speed() { echo "{\"OTIO_SCHEMA\": \"LinearTimeWarp.1\", \"name\": \"speed\", \"effect_name\": \"LinearTimeWarp\", \"time_scalar\": $1}"; }
gap() { echo "{\"OTIO_SCHEMA\": \"Gap.1\", \"source_range\": $(range_of 0 "$1" 24)}"; }
track() {
    local kind=$1 name=$2 IFS=,
    shift 2
    echo "{\"OTIO_SCHEMA\": \"Track.1\", \"name\": \"$name\", \"kind\": \"$kind\", \"children\": [$*]}"
}
dissolve="{\"OTIO_SCHEMA\": \"Transition.1\", \"name\": \"dissolve\", \"transition_type\": \"SMPTE_Dissolve\", \"in_offset\": $(time_of 12 24), \"out_offset\": $(time_of 12 24)}"
images="{\"OTIO_SCHEMA\": \"ImageSequenceReference.1\", \"target_url_base\": \"ball/\", \"name_prefix\": \"ball.\", \"name_suffix\": \".png\", \"start_frame\": 1001, \"frame_step\": 1, \"rate\": 24, \"frame_zero_padding\": 4, \"available_range\": $(range_of 0 72 24)}"

picture=$(track Video V1 \
    "$(clip bars "$(range_of 0 24 24)" "$(generator SMPTEBars 24 '{}')")" \
    "$(clip leader "$(range_of 0 48 24)" "$(generator CountingLeader 48 '{}')")" \
    "$(clip sky "$(range_of 0 96 24)" "$(file sky.mp4 240 24)")" \
    "$dissolve" \
    "$(clip fractal "$(range_of 25 75 25)" "$(file fractal.mp4 150 25)")" \
    "$(clip 'sky, twice as fast' "$(range_of 120 48 24)" "$(file sky.mp4 240 24)" "$(speed 2)")" \
    "$(clip 'sky, backwards' "$(range_of 0 24 24)" "$(file sky.mp4 240 24)" "$(speed -1)")")
overlay=$(track Video V2 \
    "$(gap 84)" \
    "$(clip title "$(range_of 0 72 24)" "$(generator Title 72 '{"text": "qrtPlayer 0.81", "color": [1, 1, 1, 1]}')")" \
    "$(gap 36)" \
    "$(clip ball "$(range_of 0 72 24)" "$images")")
voice=$(track Audio A1 "$(gap 72)" "$(clip 'sky, sound' "$(range_of 0 96 24)" "$(file sky.mp4 240 24)")")
music=$(track Audio A2 "$(clip hum "$(range_of 0 624000 48000)" "$(file hum.wav 624000 48000)")")
marker="{\"OTIO_SCHEMA\": \"Marker.2\", \"name\": \"first cut\", \"color\": \"RED\", \"marked_range\": $(range_of 72 1 24)}"
cat >"$part/sample.otio" <<END
{"OTIO_SCHEMA": "Timeline.1", "name": "sample", "global_start_time": $(time_of 86400 24),
 "tracks": {"OTIO_SCHEMA": "Stack.1", "name": "tracks", "markers": [$marker],
  "children": [$picture, $overlay, $voice, $music]}}
END
rm -rf "$folder"
mv "$part" "$folder"
