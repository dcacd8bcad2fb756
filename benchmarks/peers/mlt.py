"""MLT, through its Python interface: the image of a frame in memory, copied into a Python object (about 8 MB at 1080p)."""
import time

from peer import Figure, Peer, Unavailable, backward_figure, random_figure, wait_times


def measure(clip):
    try:
        import mlt7 as mlt
    except ImportError:
        raise Unavailable("MLT's Python interface is not installed (Debian: python3-mlt)") from None
    mlt.Factory.init()
    profile = mlt.Profile()
    producer = mlt.Producer(profile, "avformat", clip.path)
    if not producer.is_valid():
        raise Unavailable("MLT cannot open the clip (Debian: libmlt7 with its avformat module)")
    profile.from_producer(producer)
    producer = mlt.Producer(profile, "avformat", clip.path)

    def fetch(frame):
        producer.seek(frame)
        image = mlt.frame_get_image(producer.get_frame(), mlt.mlt_image_rgba, clip.width, clip.height)
        if len(image) < clip.width * clip.height * 4:
            raise Unavailable("MLT gave no image")

    def play():
        begin = time.monotonic()
        for frame in range(clip.num_frames):
            fetch(frame)
        return Figure({"frames/s": clip.num_frames / (time.monotonic() - begin)}, how)

    yield Peer("MLT", mlt.mlt_version_get_string())
    how = "mlt7.Producer(profile, 'avformat', CLIP): seek, get_frame, frame_get_image(mlt_image_rgba)"
    yield "forward", play
    yield "random exact frames", lambda: random_figure(clip, fetch, how)
    yield "backwards, frame by frame", lambda: backward_figure(wait_times(clip.backward_frames(), fetch), how)
