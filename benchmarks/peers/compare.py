#!/usr/bin/python3
"""Measures other players from Debian's packages on a clip, where they are installed. See README.md.

Exit status: 0 when every installed peer was measured, 1 when one of them failed or there was nothing to measure, 2 for
a wrong command line.
"""
import argparse
import importlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
from dataclasses import asdict

from peer import Peer, Unavailable, clip_of

PEERS = ["ffmpeg", "mpv", "mlt", "gstreamer"]
ROOT = pathlib.Path(__file__).resolve().parents[2]
DEFAULT_CLIP = ROOT / "build" / "peers" / "h264-24.mp4"
MAKE_CLIP = ("ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=size=1920x1080:rate=24,noise=alls=3:allf=t -frames:v 312 "
             "-c:v libx264 -preset fast -crf 23 -bf 3 -sc_threshold 0 -pix_fmt yuv420p -g 24 -keyint_min 24")


def default_clip():
    """13 seconds of H.264 at 1920 x 1080, 24 frames/s, B-frames, groups of 24."""
    if not DEFAULT_CLIP.exists():
        DEFAULT_CLIP.parent.mkdir(parents=True, exist_ok=True)
        unfinished = DEFAULT_CLIP.with_name("unfinished.mp4")
        subprocess.run(MAKE_CLIP.split() + [str(unfinished)], check=True)
        unfinished.rename(DEFAULT_CLIP)
    return str(DEFAULT_CLIP)


def tell(case, text):
    print(f"    {case:34} {text}", flush=True)


def measure_case(case, run):
    """The case's figure, or null when it failed."""
    try:
        figure = run()
    except Unavailable as reason:
        tell(case, f"failed: {reason}")
        return None
    except subprocess.TimeoutExpired as reason:
        tell(case, f"failed: took more than {reason.timeout} seconds")
        return None
    figure.case = case
    tell(case, "   ".join(f"{value:.4g} {unit}" for unit, value in figure.values.items()))
    return figure


def measure(name, clip):
    """The peer with its figures, or null when it is not installed; and whether all its cases were measured."""
    peer, is_whole = None, True
    try:
        for item in importlib.import_module(name).measure(clip):
            if isinstance(item, Peer):
                peer = item
                print(f"{peer.name} {peer.version}", flush=True)
            elif figure := measure_case(*item):
                peer.figures.append(figure)
            else:
                is_whole = False
    except Unavailable as reason:
        print(f"    failed: {reason}" if peer else f"{name}: left out: {reason}", flush=True)
        is_whole = peer is None
    return peer, is_whole


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("clip", nargs="?", help="a media file; without one a clip is made under build/peers/")
    parser.add_argument("--peers", default=",".join(PEERS), help=f"some of {','.join(PEERS)}")
    parser.add_argument("--output", help="a file for the figures, as JSON")
    arguments = parser.parse_args()
    names = arguments.peers.split(",")
    if unknown := [name for name in names if name not in PEERS]:
        parser.error(f"no peer is named '{unknown[0]}'; there are: {', '.join(PEERS)}")
    for tool in ("ffmpeg", "ffprobe"):
        if not shutil.which(tool):
            sys.exit(f"compare.py: {tool} is missing (Debian: ffmpeg)")
    if arguments.clip and not os.path.exists(arguments.clip):
        parser.error(f"{arguments.clip}: no such file")
    try:
        clip = clip_of(arguments.clip or default_clip())
    except (subprocess.CalledProcessError, ValueError, KeyError, IndexError):
        sys.exit(f"compare.py: {arguments.clip or DEFAULT_CLIP} is no video with a known number of frames")
    print(f"{os.path.basename(clip.path)}: {clip.num_frames} frames of {clip.width} x {clip.height}, "
          f"{float(clip.rate):g} a second")
    if not os.environ.get("DISPLAY"):
        print("there is no display: OpenGL is left out; scripts/with-display.sh lends one")
    results = [measure(name, clip) for name in names]
    measured = [peer for peer, _ in results if peer]
    if arguments.output:
        content = {"clip": asdict(clip) | {"path": os.path.basename(clip.path), "rate": str(clip.rate)},
                   "peers": [asdict(peer) for peer in measured]}
        text = json.dumps(content, indent=1).replace(clip.path, "CLIP")
        pathlib.Path(arguments.output).write_text(text + "\n", encoding="utf-8")
    sys.exit(1 if not measured or not all(is_whole for _, is_whole in results) else 0)


if __name__ == "__main__":
    main()
