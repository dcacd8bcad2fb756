"""FFmpeg's own program. Single frames are left to the plain loop of qrtHostBenchmark: a process for each would measure
the start of processes."""
import shutil
import subprocess

from peer import Peer, Unavailable, run_forward


def measure(clip):
    if not shutil.which("ffmpeg"):
        raise Unavailable("ffmpeg is not installed (Debian: ffmpeg)")
    version = subprocess.run(["ffmpeg", "-version"], capture_output=True, text=True, check=True).stdout.split()[2]
    command = ["ffmpeg", "-v", "error", "-nostdin", "-i", clip.path, "-an", "-pix_fmt", "rgba", "-f", "rawvideo", "-y",
               "/dev/null"]
    yield Peer("FFmpeg", version)
    yield "forward", lambda: run_forward(command, clip.num_frames)
