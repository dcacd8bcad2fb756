#!/usr/bin/env bash
# Makes the sound files that the tests of the reference host read, and FFmpeg's own decode of them to compare with.
#   tests/host/make-sound-clips.sh FOLDER
# NAME.f32 beside a file NAME holds its sound as interleaved floats in the file's own rate and channels; NAME.stereo.f32
# the same in stereo.
set -euo pipefail

folder=$(realpath -m "${1:?usage: make-sound-clips.sh FOLDER}")
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
picture=(-f lavfi -i testsrc2=size=64x48:rate=24:duration=3)
# Two channels that differ, with tones that never repeat, so that no sample can be taken for another.
stereo() { printf '%s' "aevalsrc=0.4*sin(2*PI*(300*t+400*t*t))|0.3*sin(2*PI*(900*t+150*t*t)):s=$1:d=3"; }
sound=(-f lavfi -i "$(stereo 48000)")
sound44=(-f lavfi -i "$(stereo 44100)")
surround=(-f lavfi -i "aevalsrc=0.1*sin(880*t)|0.1*sin(1760*t)|0.2*sin(2640*t)|0.3*sin(300*t)|0.1*sin(4000*t)|0.1*sin(5000*t):s=48000:d=3:c=5.1")
# Noise that its decoder would make up differently each time is left out.
aac=(-c:a aac -b:a 128k -aac_pns 0)

ff "${sound[@]}" -c:a pcm_s16le plain.wav
ff "${sound[@]}" -c:a flac plain.flac
ff "${sound[@]}" "${aac[@]}" plain.m4a
ff "${sound44[@]}" "${aac[@]}" coarse.mkv
ff "${sound44[@]}" "${aac[@]}" coarse.flv
ff "${sound[@]}" -c:a libmp3lame -b:a 128k plain.mp3
ff "${sound[@]}" -c:a libopus -b:a 96k plain.opus
ff "${sound[@]}" -c:a libopus -b:a 96k opus.webm
ff "${sound[@]}" -c:a libopus -b:a 96k opus.mp4
ff "${sound[@]}" -c:a libvorbis plain.ogg
ff "${sound44[@]}" -c:a libvorbis vorbis.mkv
ff "${sound[@]}" -c:a ac3 plain.ac3
ff "${sound[@]}" "${aac[@]}" plain.aac
ff "${sound44[@]}" -c:a mp2 transport.ts
ff "${sound[@]}" -c:a pcm_s16be plain.mov
ff "${sound44[@]}" -c:a wavpack unstated.mka
ff "${picture[@]}" "${sound[@]}" -c:v mpeg4 "${aac[@]}" -movflags +faststart movie.mp4
ff -ss 0.7 -i movie.mp4 -c copy edited.mp4
ff "${picture[@]}" -itsoffset 0.5 "${sound[@]}" -map 0 -map 1 -c:v mpeg4 -c:a pcm_s16le late.mkv
ff -f lavfi -i "aevalsrc=0.4*sin(2*PI*(300*t+400*t*t)):s=48000:d=3" -c:a pcm_s16le mono.wav
ff "${surround[@]}" -c:a pcm_s16le surround.wav
ff "${surround[@]}" -c:a ac3 -b:a 448k surround.ac3
decoded=(plain.wav plain.flac plain.m4a coarse.mkv coarse.flv plain.mp3 plain.opus opus.webm opus.mp4 plain.ogg vorbis.mkv
    plain.ac3 plain.aac transport.ts plain.mov unstated.mka movie.mp4 edited.mp4 late.mkv mono.wav surround.wav surround.ac3)
for clip in "${decoded[@]}"; do ff -i "$clip" -map 0:a:0 -f f32le "$clip.f32"; done
for clip in mono.wav surround.wav surround.ac3; do ff -i "$clip" -map 0:a:0 -ac 2 -f f32le "$clip.stereo.f32"; done

# One click, after exactly one second
click=(-f lavfi -i "aevalsrc=0.9*eq(n\,48000):s=48000:d=2")
ff "${click[@]}" -c:a pcm_f32le click.wav
ff "${click[@]}" "${aac[@]}" click.m4a
ff "${click[@]}" -c:a libmp3lame click.mp3
ff "${click[@]}" -c:a libopus click.opus
ff "${click[@]}" -c:a libopus click.webm
ff "${click[@]}" -c:a libvorbis click.ogg
ff -f lavfi -i "aevalsrc=0.9*eq(n\,44100):s=44100:d=2" -c:a pcm_f32le click44.wav

# Half a second in the middle was never recorded.
ff "${sound[@]}" -af "asetnsamples=480,aselect='lt(t,1)+gte(t,1.5)'" -c:a pcm_s16le gap.mkv

# Bad input
ff "${picture[@]}" -c:v mpeg4 silent.mp4
head -c $(($(stat -c %s movie.mp4) * 55 / 100)) movie.mp4 >truncated.mp4
head -c $(($(stat -c %s plain.wav) / 2)) plain.wav >truncated.wav
cp plain.flac damaged.flac
printf 'damage that no decoder can mend, in the middle of the sound' |
    dd of=damaged.flac bs=1 seek=$(($(stat -c %s plain.flac) / 2)) conv=notrunc status=none
printf 'This is a shopping list: eggs, milk, butter.\n' >text.wav
: >empty.wav
mkdir folder.wav
head -c 44 plain.wav >header.wav
# The second half claims to be heard seventeen days later.
ff "${sound[@]}" -af "asetnsamples=480,asetpts='if(lt(T,1),PTS,PTS+1500000/TB)'" -c:a pcm_s16le endless.mkv
# A header may state any rate and any number of channels.
claim() {
    cp plain.wav "$1"
    printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}
claim channels.wav 22 '\377\377'
claim rate.wav 24 '\377\377\377\177'
# One packet, of as many samples as it may have in both channels together and of one more in each.
for samples in 2097152 2097153; do
    ff -f lavfi -i anullsrc=r=48000:cl=stereo -af "atrim=end_sample=$samples,asetnsamples=$samples" -c:a pcm_u8 \
        packet-$samples.mkv
done

touch "$stamp"
