#!/usr/bin/env python3
"""Draws a trace of the engine as an SVG picture: the spans of each thread, and the counters below them.

  trace-picture.py TRACE.json [--from MS] [--to MS] [--width PIXELS] >PICTURE.svg

Times are counted from the trace's first event. A trace without its end, of a process that died, is drawn as far as it
goes.
"""
import argparse
import json
import sys
from html import escape

LABELS = 190  # pixels left of the lanes
ROW = 18  # height of a span
CHART = 34  # height of a counter
GAP = 10
COLOURS = {"idle": "#eeeeee", "wait": "#e0e0e0", "render": "#f4c27a", "renderFrame": "#e89c3f", "glFinish": "#c8703a",
           "read back": "#8fbf7f", "evict": "#d98c9f", "produce": "#f9e2b8", "getVideoBuffer": "#a9c6e8"}
OTHER = "#c3cfe2"
LINE = "#6a7a94"


def read_events(path):
    """The events of a trace, with what is missing of the array's end put behind its last whole line."""
    with open(path, encoding="utf-8") as file:
        text = file.read()
    try:
        return json.loads(text)
    except json.JSONDecodeError:
        lines = text.rstrip().rstrip(",").splitlines()
        if lines and not lines[-1].rstrip().endswith("}"):
            lines.pop()
        return json.loads("\n".join(lines).rstrip().rstrip(",") + "]")


def rows_of(spans):
    """Pairs of each span with how deep it lies in others."""
    open_ends, found = [], []
    for span in sorted(spans, key=lambda span: (span["ts"], -span["dur"])):
        while open_ends and open_ends[-1] <= span["ts"]:
            open_ends.pop()
        found.append((span, len(open_ends)))
        open_ends.append(span["ts"] + span["dur"])
    return found


class Picture:
    """Lanes below each other, over one scale of time."""

    def __init__(self, begin, end, width):
        self.begin, self.end, self.width, self.height = begin, end, width, 30
        self.parts = []

    def x(self, time):
        share = (min(max(time, self.begin), self.end) - self.begin) / (self.end - self.begin)
        return LABELS + share * (self.width - LABELS - GAP)

    def text(self, x, y, text, colour="#222222"):
        self.parts.append(f'<text x="{x:.1f}" y="{y:.1f}" fill="{colour}">{escape(text)}</text>')

    def draw_scale(self, origin):
        step = next(s for s in (100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000, 100000, 200000, 500000, 10 ** 6,
                                10 ** 7, 10 ** 8, 10 ** 12) if (self.end - self.begin) / s <= 12)
        time = origin + -(-(self.begin - origin) // step) * step
        while time <= self.end:
            x = self.x(time)
            self.parts.append(f'<line x1="{x:.1f}" y1="20" x2="{x:.1f}" y2="HEIGHT" stroke="#dddddd"/>')
            self.text(x + 3, 16, f"{(time - origin) / 1000:g} ms", "#666666")
            time += step

    def draw_thread(self, name, spans):
        rows = rows_of(spans)
        self.text(6, self.height + 13, name)
        for span, row in rows:
            left, right = self.x(span["ts"]), self.x(span["ts"] + span["dur"])
            width, y = max(right - left, 0.5), self.height + row * ROW
            frame = span.get("args", {}).get("frame")
            label = span["name"] + (f" {frame}" if frame is not None else "")
            self.parts.append(f'<rect x="{left:.1f}" y="{y}" width="{width:.1f}" height="{ROW - 2}" '
                              f'fill="{COLOURS.get(span["name"], OTHER)}"><title>{escape(label)}: '
                              f'{span["dur"] / 1000:.3f} ms {escape(json.dumps(span.get("args", {})))}</title></rect>')
            if width > 6.2 * len(label) + 4:
                self.text(left + 3, y + 12, label)
        self.height += (max(row for _, row in rows) + 1) * ROW + GAP

    def draw_counter(self, name, key, counts):
        """Steps from one value to the next; what was told before the window stands at its left end."""
        most = max(max(count["args"][key] for count in counts), 1)
        bottom = self.height + CHART
        self.text(6, self.height + 13, name)
        self.text(6, self.height + 27, f"{key}, 0 to {most}", "#666666")
        before = [count for count in counts if count["ts"] <= self.begin]
        inside = [count for count in counts if self.begin < count["ts"] <= self.end]
        points, value = [], before[-1]["args"][key] if before else 0
        points.append((self.x(self.begin), value))
        for count in inside:
            x = self.x(count["ts"])
            points += [(x, value), (x, count["args"][key])]
            value = count["args"][key]
        points.append((self.x(self.end), value))
        path = " ".join(f"{x:.1f},{bottom - y / most * (CHART - 4):.1f}" for x, y in points)
        self.parts.append(f'<polygon points="{points[0][0]:.1f},{bottom} {path} {points[-1][0]:.1f},{bottom}" '
                          f'fill="{OTHER}" stroke="{LINE}"/>')
        self.height += CHART + GAP

    def svg(self):
        body = "\n".join(self.parts).replace("HEIGHT", str(self.height))
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{self.width}" height="{self.height}" '
                f'font-family="sans-serif" font-size="11">\n<rect width="100%" height="100%" fill="#ffffff"/>\n'
                f"{body}\n</svg>")


def draw(events, first, last, width):
    """The part of a trace from `first` to `last` milliseconds, None for all, as SVG."""
    timed = [event for event in events if event["ph"] in "XC"]
    if not timed:
        raise ValueError("there is nothing in it")
    origin = min(event["ts"] for event in timed)
    begin = origin + (first or 0) * 1000
    end = origin + last * 1000 if last is not None else max(event["ts"] + event.get("dur", 0) for event in timed)
    if begin >= end:
        raise ValueError("nothing lies between --from and --to")
    names = {event["tid"]: event["args"]["name"] for event in events if event["name"] == "thread_name"}
    picture = Picture(begin, end, width)
    picture.draw_scale(origin)
    spans, counts = {}, {}
    for event in timed:
        if event["ph"] == "X" and event["ts"] < end and event["ts"] + event["dur"] > begin:
            spans.setdefault(event["tid"], []).append(event)
        elif event["ph"] == "C":
            for key in event["args"]:
                counts.setdefault((event["name"], key), []).append(event)
    for thread, of_thread in sorted(spans.items()):
        picture.draw_thread(names.get(thread, f"thread {thread}"), of_thread)
    for (name, key), of_counter in sorted(counts.items()):
        picture.draw_counter(name, key, of_counter)
    return picture.svg()


def main():
    parser = argparse.ArgumentParser(description="Draws a trace of the engine as an SVG picture.")
    parser.add_argument("trace")
    parser.add_argument("--from", dest="first", type=float, metavar="MS", help="where the picture begins")
    parser.add_argument("--to", dest="last", type=float, metavar="MS", help="where it ends")
    parser.add_argument("--width", type=int, default=1200, metavar="PIXELS")
    arguments = parser.parse_args()
    try:
        print(draw(read_events(arguments.trace), arguments.first, arguments.last, arguments.width))
    except (OSError, ValueError) as error:
        sys.exit(f"trace-picture.py: {arguments.trace}: {error}")
    except (AttributeError, KeyError, TypeError):  # what is looked for in events is not there
        sys.exit(f"trace-picture.py: {arguments.trace}: is JSON, but no trace")


if __name__ == "__main__":
    main()
