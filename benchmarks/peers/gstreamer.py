"""GStreamer: whole clips with gst-launch-1.0, single frames through an appsink in Python."""
import math
import os
import shutil
import time

from peer import (NUM_BACKWARD_FRAMES, TIMEOUT_SECONDS, Peer, Unavailable, backward_figure, random_figure, run_forward,
                  wait_times)

DECODE = "decodebin force-sw-decoders=true"
CONVERT = "videoconvert n-threads=2 ! video/x-raw,format=RGBA"
CONVERT_IN_OPENGL = ("glupload ! glcolorconvert ! video/x-raw(memory:GLMemory),format=RGBA ! gldownload ! "
                     "video/x-raw,format=RGBA")


def launch(clip, convert):
    return ["gst-launch-1.0", "-q", "filesrc", f"location={clip.path}", "!", *DECODE.split(), "!", *convert.split(), "!",
            "fakesink", "sync=false"]


class PausedPipeline:
    """A paused pipeline that seeks on demand."""

    def __init__(self, gst, clip):
        self.gst, self.clip = gst, clip
        self.description = f"filesrc location=CLIP ! {DECODE} ! {CONVERT} ! appsink name=sink sync=false max-buffers=2"
        self.pipeline = gst.parse_launch(self.description.replace("CLIP", clip.path))
        self.sink = self.pipeline.get_by_name("sink")
        self.pipeline.set_state(gst.State.PAUSED)
        self.settle()

    def settle(self):
        result, *_ = self.pipeline.get_state(TIMEOUT_SECONDS * self.gst.SECOND)
        if result == self.gst.StateChangeReturn.FAILURE:
            raise Unavailable("GStreamer cannot play the clip (Debian: gstreamer1.0-plugins-good, gstreamer1.0-libav)")

    def close(self):
        self.pipeline.set_state(self.gst.State.NULL)

    def frame_of(self, sample):
        stream_time = sample.get_segment().to_stream_time(self.gst.Format.TIME, sample.get_buffer().pts)
        # A frame that began before the position is cut there, so the time lies anywhere within the frame.
        return math.floor(stream_time / self.gst.SECOND * float(self.clip.rate) + 0.01)

    def fetch(self, frame):
        gst = self.gst
        # The middle of the frame, so that no rounding decides between two.
        position = int(self.clip.seconds_of(frame + 0.5) * gst.SECOND)
        self.pipeline.seek_simple(gst.Format.TIME, gst.SeekFlags.FLUSH | gst.SeekFlags.ACCURATE, position)
        sample = self.sink.emit("pull-preroll")
        if not sample or self.frame_of(sample) != frame:
            raise Unavailable(f"GStreamer gave frame {sample and self.frame_of(sample)} instead of {frame}")

    def play_backwards(self, num_frames):
        """Milliseconds between the frames of its own reverse mode."""
        gst = self.gst
        flags = gst.SeekFlags.FLUSH | gst.SeekFlags.ACCURATE
        begin = time.monotonic()
        self.pipeline.seek(-1.0, gst.Format.TIME, flags, gst.SeekType.SET, 0, gst.SeekType.SET,
                           int(self.clip.seconds_of(self.clip.num_frames) * gst.SECOND))
        self.pipeline.set_state(gst.State.PLAYING)
        times = []
        for _ in range(num_frames):
            if not self.sink.emit("pull-sample"):
                raise Unavailable("GStreamer's reverse mode ended early")
            now = time.monotonic()
            times.append(1e3 * (now - begin))
            begin = now
        return times


def measure(clip):
    if not shutil.which("gst-launch-1.0"):
        raise Unavailable("GStreamer is not installed (Debian: gstreamer1.0-tools and its plugins)")
    try:
        import gi
        gi.require_version("Gst", "1.0")
        from gi.repository import Gst
    except (ImportError, ValueError):
        raise Unavailable("GStreamer's Python interface is not installed (Debian: python3-gi, "
                          "gir1.2-gstreamer-1.0)") from None
    Gst.init(None)
    yield Peer("GStreamer", ".".join(str(part) for part in Gst.version()[:3]))
    yield "forward", lambda: run_forward(launch(clip, CONVERT), clip.num_frames)
    if os.environ.get("DISPLAY"):
        yield ("forward, OpenGL and read-back",
               lambda: run_forward(launch(clip, CONVERT_IN_OPENGL), clip.num_frames))
    paused = PausedPipeline(Gst, clip)
    try:
        how = f"{paused.description}; accurate flushing seek, pull-preroll"
        yield "random exact frames", lambda: random_figure(clip, paused.fetch, how)
        yield ("backwards, frame by frame",
               lambda: backward_figure(wait_times(clip.backward_frames(), paused.fetch), how))
        yield ("backwards, its own reverse mode",
               lambda: backward_figure(paused.play_backwards(NUM_BACKWARD_FRAMES),
                                       f"{paused.description}; seek with rate -1, pull-sample"))
    finally:
        paused.close()
