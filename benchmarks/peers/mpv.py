"""mpv, driven through its JSON interface."""
import json
import os
import shutil
import socket
import subprocess
import tempfile
import time

from peer import (NUM_BACKWARD_FRAMES, TIMEOUT_SECONDS, Peer, Unavailable, backward_figure, random_figure, run_forward,
                  wait_times)

OPTIONS = ["mpv", "--no-config", "--quiet", "--msg-level=all=error", "--no-audio", "--no-sub", "--osd-level=0",
           "--hwdec=no", "--framedrop=no"]
TO_MEMORY = ["--vo=null", "--vf=format=fmt=rgba"]
TO_WINDOW = ["--vo=gpu", "--gpu-context=x11egl", "--opengl-swapinterval=0"]


class PausedMpv:
    """A paused mpv that seeks on demand."""

    def __init__(self, clip):
        self.clip = clip
        self.folder = tempfile.TemporaryDirectory()
        path = os.path.join(self.folder.name, "mpv")
        self.command = OPTIONS + TO_MEMORY + ["--pause", "--keep-open=yes", "--hr-seek=yes"]
        self.process = subprocess.Popen(self.command + [f"--input-ipc-server={path}", clip.path],
                                        stdin=subprocess.DEVNULL)
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(TIMEOUT_SECONDS)
        deadline = time.monotonic() + 30
        while self.socket.connect_ex(path) != 0:
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise Unavailable("mpv does not answer")
            time.sleep(0.01)
        self.lines = self.socket.makefile("r", encoding="utf-8")
        while self.ask("get_property", "time-pos") is None:  # not loaded yet
            time.sleep(0.01)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.socket.close()
        self.folder.cleanup()

    def send(self, *command):
        self.socket.sendall((json.dumps({"command": command}) + "\n").encode())

    def ask(self, *command):
        self.send(*command)
        for line in self.lines:
            message = json.loads(line)
            if "error" in message:
                return message.get("data")
        raise Unavailable("mpv ended")

    def fetch(self, frame):
        """Returns when the frame has reached the video output."""
        self.send("seek", self.clip.seconds_of(frame), "absolute+exact")
        for line in self.lines:
            if json.loads(line).get("event") == "playback-restart":
                return
        raise Unavailable("mpv ended")

    def fetch_exactly(self, frame):
        self.fetch(frame)
        shown = self.ask("get_property", "time-pos") * self.clip.rate
        if round(float(shown)) != frame:
            raise Unavailable(f"mpv showed frame {float(shown):.2f} instead of {frame}")


def measure(clip):
    if not shutil.which("mpv"):
        raise Unavailable("mpv is not installed (Debian: mpv)")
    version = subprocess.run(["mpv", "--version"], capture_output=True, text=True, check=True).stdout.split()[1]
    yield Peer("mpv", version)
    yield "forward", lambda: run_forward(OPTIONS + TO_MEMORY + ["--untimed", clip.path], clip.num_frames)
    if os.environ.get("DISPLAY"):
        window = TO_WINDOW + [f"--geometry={clip.width}x{clip.height}+0+0"]
        yield ("forward, OpenGL into a window",
               lambda: run_forward(OPTIONS + window + ["--untimed", clip.path], clip.num_frames))
    with PausedMpv(clip) as paused:
        how = " ".join(paused.command) + "; seek absolute+exact until playback-restart"
        for frame in clip.random_frames()[:5]:
            paused.fetch_exactly(frame)
        yield "random exact frames", lambda: random_figure(clip, paused.fetch, how)
        yield ("backwards, frame by frame",
               lambda: backward_figure(wait_times(clip.backward_frames(), paused.fetch), how))
    reverse = ["--play-dir=backward", f"--start={clip.seconds_of(clip.num_frames)}",
               f"--end={clip.seconds_of(clip.num_frames - NUM_BACKWARD_FRAMES)}", "--untimed", clip.path]
    yield ("backwards, its own reverse mode",
           lambda: run_forward(OPTIONS + TO_MEMORY + reverse, NUM_BACKWARD_FRAMES))
