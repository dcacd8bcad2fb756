#!/usr/bin/env python3
"""What scripts/trace-picture.py makes of a trace."""
import importlib.util
import json
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts/trace-picture.py"
spec = importlib.util.spec_from_file_location("trace_picture", SCRIPT)
trace_picture = importlib.util.module_from_spec(spec)
spec.loader.exec_module(trace_picture)


def span(name, begin, duration, thread=1, **args):
    return {"name": name, "ph": "X", "pid": 1, "tid": thread, "ts": begin, "dur": duration, "args": args}


EVENTS = [
    {"name": "thread_name", "ph": "M", "pid": 1, "tid": 1, "args": {"name": "QRT-PLAYER <1>"}},
    span("produce", 1000, 800, frame=7),
    span("render", 1100, 400, frame=7),
    span("idle", 1800, 200),
    span("wait", 1000, 1000, thread=2),
    {"name": "blocks", "ph": "C", "pid": 1, "tid": 1, "ts": 1500, "args": {"free": 3, "lent": 1}},
]


class TracePicture(unittest.TestCase):
    def draw(self, events, first=None, last=None):
        return xml.fromstring(trace_picture.draw(events, first, last, 1200))

    def boxes(self, picture):
        """Name to (x, y, width) of each span."""
        found = {}
        for box in picture.iter("{http://www.w3.org/2000/svg}rect"):
            title = box.find("{http://www.w3.org/2000/svg}title")
            if title is not None:
                found[re.match("[A-Za-z ]+", title.text).group(0).strip()] = tuple(
                    float(box.get(key)) for key in ("x", "y", "width"))
        return found

    def test_spans_lie_in_the_lanes_of_their_threads_below_what_contains_them(self):
        boxes = self.boxes(self.draw(EVENTS))
        self.assertEqual(boxes["produce"][1], boxes["idle"][1])
        self.assertEqual(boxes["render"][1], boxes["produce"][1] + trace_picture.ROW)
        self.assertGreater(boxes["wait"][1], boxes["render"][1])

    def test_widths_are_durations(self):
        boxes = self.boxes(self.draw(EVENTS))
        self.assertAlmostEqual(boxes["produce"][2] / boxes["render"][2], 2, delta=0.01)
        self.assertAlmostEqual(boxes["wait"][2], 1200 - trace_picture.LABELS - trace_picture.GAP, delta=0.1)
        self.assertAlmostEqual(boxes["idle"][0], boxes["produce"][0] + boxes["produce"][2], delta=0.2)

    def test_a_part_leaves_out_what_lies_outside(self):
        self.assertEqual(set(self.boxes(self.draw(EVENTS, 0.85, 0.95))), {"idle", "wait"})

    def test_counters_are_told_below(self):
        told = list(self.draw(EVENTS).itertext())
        self.assertIn("free, 0 to 3", told)
        self.assertIn("lent, 0 to 1", told)

    def test_a_trace_without_its_end_is_read_as_far_as_it_is_whole(self):
        lines = [json.dumps(event) for event in EVENTS]
        for tail in ("", ",", ',\n{"name":"cut o'):
            with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
                file.write("[\n" + ",\n".join(lines) + tail)
                file.flush()
                self.assertEqual(trace_picture.read_events(file.name), EVENTS, tail)

    def test_nothing_to_draw_is_said(self):
        for events, first, last in (([], None, None), (EVENTS, 3, None), (EVENTS, 2, 1), (EVENTS, None, 0)):
            with self.assertRaises(ValueError):
                self.draw(events, first, last)

    def test_what_is_no_trace_is_refused_in_a_line(self):
        for text in ('{"events": 3}', '[1, 2]', '"a text"', "17", "no JSON", '[{"name": "no phase"}]',
                     '[{"ph": "X", "ts": 5}]', '[{"name": "n", "ph": "C", "ts": 5, "args": {"free": "many"}}]'):
            with tempfile.NamedTemporaryFile("w", suffix=".json") as file:
                file.write(text)
                file.flush()
                result = subprocess.run([SCRIPT, file.name], capture_output=True, text=True)
                self.assertEqual((result.returncode, result.stdout), (1, ""), text)
                self.assertRegex(result.stderr, rf"\Atrace-picture.py: {re.escape(file.name)}: .+\n\Z", text)


if __name__ == "__main__":
    unittest.main()
