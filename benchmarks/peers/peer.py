"""What the peers' measurements share: the clip, the frames that are asked for, and how a figure is told."""
import json
import random
import statistics
import subprocess
import time
from dataclasses import dataclass, field
from fractions import Fraction

NUM_RANDOM_FRAMES = 60
NUM_BACKWARD_FRAMES = 120
TIMEOUT_SECONDS = 600


class Unavailable(Exception):
    """A peer is not on this machine, or one of its cases failed; says why."""


@dataclass
class Clip:
    path: str
    width: int
    height: int
    rate: Fraction
    num_frames: int

    def seconds_of(self, frame):
        return float(frame / self.rate)

    def random_frames(self):
        """The same ones in every run and for every peer."""
        return random.Random(60).choices(range(self.num_frames), k=NUM_RANDOM_FRAMES)

    def backward_frames(self):
        return range(self.num_frames - 1, max(self.num_frames - 1 - NUM_BACKWARD_FRAMES, -1), -1)


@dataclass
class Figure:
    """What one case came to; `case` is filled in by who asked for it."""
    values: dict  # by unit
    how: str  # the command line, or the calls
    case: str = ""


@dataclass
class Peer:
    name: str
    version: str
    figures: list = field(default_factory=list)


def clip_of(path):
    fields = "stream=width,height,r_frame_rate,nb_frames"
    command = ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", fields, "-of", "json", path]
    stream = json.loads(subprocess.run(command, capture_output=True, text=True, check=True).stdout)["streams"][0]
    return Clip(path, stream["width"], stream["height"], Fraction(stream["r_frame_rate"]), int(stream["nb_frames"]))


def run_forward(command, num_frames):
    """Frames a second of a program that plays the clip once, its start included."""
    begin = time.monotonic()
    result = subprocess.run(command, capture_output=True, text=True, check=False,
                            timeout=TIMEOUT_SECONDS, stdin=subprocess.DEVNULL)
    seconds = time.monotonic() - begin
    if result.returncode != 0:
        raise Unavailable(f"{command[0]} failed: {(result.stderr or result.stdout).strip()[-300:]}")
    return Figure({"frames/s": num_frames / seconds}, " ".join(command))


def wait_times(frames, fetch):
    """Milliseconds that each of the frames was waited for."""
    times = []
    for frame in frames:
        begin = time.monotonic()
        fetch(frame)
        times.append(1e3 * (time.monotonic() - begin))
    return times


def random_figure(clip, fetch, how):
    times = sorted(wait_times(clip.random_frames(), fetch))
    return Figure({"ms median": statistics.median(times), "ms 95 %": times[int(0.95 * len(times))]}, how)


def backward_figure(times, how):
    return Figure({"frames/s": 1e3 * len(times) / sum(times), "ms first": times[0],
                   "ms longest after it": max(times[1:])}, how)
