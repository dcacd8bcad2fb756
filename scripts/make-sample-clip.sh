#!/usr/bin/env bash
# Makes a small sample clip: ten seconds of H.264 with B-frames and AAC sound, each picture showing its own number.
#   scripts/make-sample-clip.sh OUT.mp4
set -euo pipefail

usage='usage: make-sample-clip.sh OUT.mp4'
case ${1-} in
    -h | --help)
        echo "$usage"
        echo 'Makes a ten-second sample clip, 640x360 at 24 frames/s, H.264 and AAC, with a visible frame number.'
        exit 0
        ;;
    '')
        echo "$usage" >&2
        exit 2
        ;;
esac
out=$1
rate=24
seconds=10
font=/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf

fail() {
    echo "make-sample-clip.sh: $1" >&2
    exit 1
}
command -v ffmpeg >/dev/null || fail "ffmpeg is missing; scripts/setup.sh installs it"
[[ -e $font ]] || fail "the font $font is missing; scripts/setup.sh installs it"

# A sky that changes colour, a ball that crosses it, and the number and time of each frame.
picture="gradients=size=640x360:rate=$rate:duration=$seconds:nb_colors=4:c0=0x20306a:c1=0x6a2c70:c2=0xb83b5e:c3=0x1f6f8b:speed=0.02:seed=81"
ball="color=white:size=64x64:rate=$rate:duration=$seconds,format=yuva444p,geq=lum=255:cb=128:cr=128:a='255*lt(hypot(X-32,Y-32),30)'"
label="fontfile=$font:fontcolor=white:box=1:boxcolor=black@0.75:boxborderw=12:x=(w-text_w)/2"
filter="[0:v][1:v]overlay=x='(W-w)*(0.5+0.45*sin(t*2.1))':y='(H-h)*(1-abs(cos(t*2.6)))*0.9',\
drawtext=$label:fontsize=96:y=96:text='%{frame_num}',\
drawtext=$label:fontsize=32:y=262:timecode='00\:00\:00\:00':rate=$rate,format=yuv420p[picture]"

part=$(dirname "$out")/.$(basename "$out").$$.mp4
trap 'rm -f "$part"' EXIT
ffmpeg -hide_banner -loglevel error -nostdin -y \
    -f lavfi -i "$picture" -f lavfi -i "$ball" \
    -f lavfi -i "sine=frequency=330:beep_factor=4:duration=$seconds:sample_rate=48000" \
    -filter_complex "$filter" -map '[picture]' -map 2:a \
    -c:v libx264 -preset medium -crf 20 -bf 3 -g 48 \
    -color_range tv -colorspace bt709 -color_primaries bt709 -color_trc bt709 \
    -c:a aac -b:a 96k -movflags +faststart "$part" || fail "ffmpeg could not make $out"
mv "$part" "$out"
