#!/usr/bin/env bash
# Makes the clips that the tests of the reference host read, and FFmpeg's own decode of them to compare with.
#   tests/host/make-test-clips.sh FOLDER
# NAME.raw beside a clip holds its frames one after the other, in the clip's own pixel format, in the order of presentation.
set -euo pipefail

folder=$(realpath -m "${1:?usage: make-test-clips.sh FOLDER}")
script=$(readlink -f "$0")
mkdir -p "$(dirname "$folder")"
exec 9>"$folder.lock"
flock 9  # builds that are tested at the same time share the folder
stamp=$folder/made
[[ -e $stamp && $stamp -nt $script ]] && exit 0
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"

ff() { ffmpeg -hide_banner -loglevel fatal -nostdin -y "$@"; }
# frames of its own decoder, one for one, whatever their timestamps, and as they are stored
reference() { ff -noautorotate -i "$1" -map 0:v:0 -vsync passthrough -f rawvideo "${1%.*}.raw"; }
picture=(-f lavfi -i testsrc2=size=160x96:rate=24:duration=2)
sound=(-f lavfi -i sine=frequency=440:duration=2)
h264=(-c:v libx264 -preset veryfast -pix_fmt yuv420p -bf 3 -g 12)

# Frame numbering
ff "${picture[@]}" "${sound[@]}" "${h264[@]}" -c:a aac -movflags +faststart bframes.mp4
ff "${picture[@]}" "${h264[@]}" -x264-params open-gop=1:b-adapt=0 opengop.mp4
ff "${picture[@]}" "${h264[@]}" -x264-params intra-refresh=1 refresh.mkv
ff "${picture[@]}" "${h264[@]}" -output_ts_offset 5 offset.mkv
ff "${picture[@]}" "${h264[@]}" -x264-params b-adapt=0 transport.ts
ff "${picture[@]}" "${h264[@]}" -flags +ildct+ilme -x264-params tff=1 interlaced.ts
ff "${picture[@]}" "${h264[@]}" elementary.h264
ff "${picture[@]}" -c:v mpeg4 -bf 2 -g 12 packed.avi
ff "${picture[@]}" -c:v mpeg2video -bf 2 -g 12 programme.mpg
ff -ss 0.7 -i bframes.mp4 -c copy edited.mp4
# As if recording had begun in the middle of the programme: the first pictures refer to some that were never recorded.
ff -i opengop.mp4 -c copy -bsf:v h264_mp4toannexb,dump_extra opengop.ts
tail -c +$((188 * 100 + 1)) opengop.ts >joined.ts
ff "${picture[@]}" -c:v libx264 -preset veryfast -pix_fmt yuv420p10le -bf 3 -g 12 tenbit.mkv
ff -f lavfi -i testsrc2=size=160x96:rate=30000/1001:duration=1 "${h264[@]}" ntsc.mov
# The test picture itself comes in even sizes only.
ff -f lavfi -i "testsrc2=size=64x48:rate=25:duration=0.4,format=yuv444p,crop=33:17:exact=1" -c:v ffv1 -pix_fmt yuv420p odd.mkv
ff -f lavfi -i testsrc2=size=160x96:rate=25:duration=10.4 "${h264[@]}" -g 250 -keyint_min 250 -sc_threshold 0 \
    longgroup.mp4
ff -f lavfi -i testsrc2=size=160x96:rate=25:duration=5.2 "${h264[@]}" -g 100 -keyint_min 100 -sc_threshold 0 \
    -x264-params open-gop=1 longopen.mp4
hevc=(-c:v libx265 -preset ultrafast -x265-params)
ff "${picture[@]}" "${hevc[@]}" log-level=none:keyint=12:bframes=3:open-gop=0 -tag:v hvc1 hevc.mp4
ff "${picture[@]}" "${hevc[@]}" log-level=none:keyint=12:min-keyint=12:bframes=3:open-gop=1 hevcopen.mkv
ff "${picture[@]}" -frames:v 12 -c:v prores_ks -profile:v 3 prores.mov
ff "${picture[@]}" -frames:v 24 -c:v mjpeg -q:v 3 motionjpeg.avi
ff "${picture[@]}" -c:v libvpx-vp9 -deadline good -cpu-used 8 -auto-alt-ref 1 -lag-in-frames 16 -b:v 200k -g 12 \
    vp9.webm
ff -f lavfi -i testsrc2=size=1280x720:rate=24:duration=0.25 -c:v dnxhd -b:v 60M -pix_fmt yuv422p dnxhd.mxf
# every third frame is left out, and the others keep their times
ff "${picture[@]}" -vf "select='mod(n,3)'" -vsync vfr "${h264[@]}" varying.mkv
ff -i bframes.mp4 -c copy -an -metadata:s:v rotate=270 turned.mov
ff -f lavfi -i testsrc2=size=160x96:rate=24:duration=1 "${h264[@]}" -flags +ildct+ilme -x264-params bff=1 fields.mov
numbered=(longgroup.mp4 longopen.mp4 hevc.mp4 hevcopen.mkv prores.mov motionjpeg.avi vp9.webm dnxhd.mxf varying.mkv
    turned.mov fields.mov bframes.mp4 opengop.mp4 refresh.mkv offset.mkv transport.ts interlaced.ts elementary.h264 packed.avi programme.mpg
    edited.mp4 joined.ts tenbit.mkv ntsc.mov odd.mkv)

# Colour: the same picture, told apart only by what the stream states
flagged() {
    ff -f lavfi -i testsrc2=size=64x48:rate=24:duration=0.25 -vf "scale=out_range=$3,format=yuv420p" -c:v libx264 \
        -preset veryfast -color_range "$3" -colorspace "$2" -color_primaries bt709 -color_trc bt709 "$1"
}
flagged bt709.mp4 bt709 tv
flagged bt601.mp4 smpte170m tv
flagged bt2020.mp4 bt2020nc tv
flagged full.mp4 bt709 pc
ff -f lavfi -i testsrc2=size=64x48:rate=24:duration=0.25 -vf setsar=2/1 "${h264[@]}" anamorphic.mp4
numbered+=(bt709.mp4 bt601.mp4 bt2020.mp4 full.mp4 anamorphic.mp4)

# Pixel formats, uncompressed; a width that no alignment divides
for format in yuv420p yuvj420p yuv422p yuv444p yuv440p yuv411p nv12 nv21 yuyv422 uyvy422 yuv420p10le yuv422p12le yuv444p16le \
    p010le gray gray10le rgb24 bgr24 rgba bgra argb gbrp gbrp10le rgb48le pal8 monob yuva420p ya8; do
    ff -f lavfi -i "testsrc2=size=64x48:rate=24,format=yuv444p,crop=37:22:exact=1" -frames:v 2 -pix_fmt "$format" -c:v rawvideo -f nut "format-$format.nut"
    numbered+=("format-$format.nut")
done

for clip in "${numbered[@]}"; do reference "$clip"; done

# Still pictures: frame 3 is missing, frame 4 is no picture.
mkdir stills
still() { ff -f lavfi -i testsrc2=size=64x48:rate=24 -frames:v 5 "$@"; }
still -pix_fmt rgb24 -start_number 101 stills/plate.%04d.png
# FFmpeg's own decode of them, before one is taken away
ff -start_number 101 -i stills/plate.%04d.png -f rawvideo -pix_fmt rgb24 stills/plate.raw
rm stills/plate.0104.png
printf 'not a picture' >stills/plate.0105.png
for suffix in bmp tga jpg webp dpx pcx; do still -frames:v 1 "stills/one.$suffix"; done
still -frames:v 1 -pix_fmt rgb24 stills/one.tif
still -frames:v 1 -pix_fmt gbrpf32le -format half stills/half.exr
still -frames:v 1 -pix_fmt gbrpf32le -format float stills/float.exr
still -frames:v 1 -pix_fmt gbrapf32le -format half stills/alpha.exr
still -frames:v 1 -pix_fmt rgb48be stills/sixteen.png

# Bad input
size=$(stat -c %s bframes.mp4)
head -c $((size * 55 / 100)) bframes.mp4 >truncated.mp4
head -c $(($(stat -c %s transport.ts) * 61 / 100)) transport.ts >truncated.ts
ff -i bframes.mp4 -c copy at-the-end.mp4
head -c $((size * 55 / 100)) at-the-end.mp4 >headless.mp4
cp bframes.mp4 damaged.mp4
printf 'damage that no decoder can mend, in the middle of the pictures' |
    dd of=damaged.mp4 bs=1 seek=$((size / 2)) conv=notrunc status=none
ff "${sound[@]}" -c:a aac audio.m4a
ff "${picture[@]}" -frames:v 1 cover.png
ff -i audio.m4a -i cover.png -map 0 -map 1 -c copy -disposition:v attached_pic cover.m4a
streams=()
for ((i = 0; i < 257; ++i)); do streams+=(-map 0); done
ff -f lavfi -i sine=duration=0.02 "${streams[@]}" -c:a pcm_u8 streams.mkv
ff -i streams.mkv -map 0 -map -0:256 -c copy most-streams.mkv
printf 'This is a shopping list: eggs, milk, butter.\n' >text.mp4
printf 'This is a shopping list: eggs, milk, butter.\n' >text.txt
: >empty.mp4
mkdir folder.mp4
cp bframes.mp4 'a name with spaces, 100% and #.mp4'

touch "$stamp"
