#!/usr/bin/env bash
# Makes media whose every frame tells its number, without loss: red is the number, green tells the file.
#   make-painted-media.sh FOLDER
set -euo pipefail

folder=$1
mkdir -p "$(dirname "$folder")"
exec 9>"$folder.lock"
flock 9  # builds that are tested at the same time share the folder
[[ -e $folder/done && ! ${BASH_SOURCE[0]} -nt $folder/done ]] && exit 0
rm -rf "$folder"
mkdir -p "$folder/overlay"

make() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }
# painted NAME RATE FRAMES GREEN
painted() {
    make -f lavfi -i "nullsrc=size=32x18:rate=$2,format=gbrp,geq=r=N:g=$4:b=0" -frames:v "$3" -c:v ffv1 -g 12 "$folder/$1"
}
painted film.mkv 24 240 20
painted pal.mkv 25 250 120
painted ntsc.mkv 30000/1001 240 220

# Half transparent blue, on every second number so that a step has to be followed; its own number is in its green.
make -f lavfi -i "nullsrc=size=32x18:rate=24,format=rgba,geq=r=0:g=N:b=255:a=128" -frames:v 48 \
    -start_number 0 "$folder/overlay/%04d.png"
for number in {0..47}; do
    mv "$folder/overlay/$(printf %04d "$number").png" "$folder/overlay/blue.$(printf %04d $((1001 + 2 * number))).png"
done

# An impulse at the first sample of each frame, as high as the frame's number plus one is a part of 256.
make -f lavfi -i "aevalsrc='eq(mod(n,2000),0)*(floor(n/2000)+1)/256|eq(mod(n,2000),0)*(floor(n/2000)+1)/256':sample_rate=48000:duration=10" \
    -c:a pcm_f32le "$folder/impulses.wav"
touch "$folder/done"
