#!/usr/bin/env python3
"""Whether the reference of the public headers is whole, and whether Doxygen would notice if it were not.

  reference_test.py ROOT
"""
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

ROOT = None
CLASS = re.compile(r"^(?:class|struct) (?:\[\[nodiscard\]\] )?QRT_\w+ (\w+)", re.M)
THING = "/// A thing.\nclass Thing {\npublic:\n    /// Works.\n    void work(int times);\n};\n"


class Reference(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, root):
        """Writes the reference of a tree; the folder that it is in, and what Doxygen said if it failed."""
        out = self.folder / "the reference"
        result = subprocess.run([root / "scripts/docs.sh", out], capture_output=True, text=True)
        return out, result.stdout + result.stderr if result.returncode else None

    def tree_with(self, header):
        """A tree whose only public header says what is given."""
        root = self.folder / "tree"
        for name in ("scripts/docs.sh", "docs/Doxyfile", "CMakeLists.txt"):
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, root / name)
        (root / "docs/reference.dox").touch()
        (root / "src/player/private").mkdir(parents=True)
        (root / "src/foundation").mkdir()
        (root / "src/player/private/qrtHidden.h").write_text("class Hidden { public: void undocumented(); };\n")
        (root / "src/player/qrtThing.h").write_text(header)
        return root

    def test_it_is_whole(self):
        out, complaint = self.write(ROOT)
        self.assertIsNone(complaint)
        self.assertTrue((out / "index.html").is_file())
        described = {name.text for name in xml.parse(out / "qrtPlayer.tag").getroot().findall("compound/name")}
        public = [path for path in (ROOT / "src").rglob("*.h") if "private" not in path.parts]
        exported = {name for path in public if path.name != "qrtRegistration.h"
                    for name in CLASS.findall(path.read_text())}
        self.assertGreater(len(exported), 20)
        self.assertEqual({name for name in exported if f"QRT_0_81::{name}" not in described}, set())

    def test_what_is_documented_passes(self):
        _, complaint = self.write(self.tree_with(THING))
        self.assertIsNone(complaint)

    def test_pages_of_headers_that_are_gone_go_from_its_own_folder_only(self):
        root = self.tree_with(THING)
        own = self.folder / "own"
        for folder, arguments, stays in (root / "build/docs", [], False), (own, [own], True):
            folder.mkdir(parents=True)
            (folder / "gone.html").touch()
            subprocess.run([root / "scripts/docs.sh", *arguments], check=True, capture_output=True)
            self.assertTrue((folder / "index.html").is_file())
            self.assertEqual((folder / "gone.html").exists(), stays)

    def test_what_is_not_is_refused(self):
        wrong = {"a class": THING.replace("/// A thing.", ""),
                 "a function": THING.replace("/// Works.", ""),
                 "an argument that is not there": THING.replace("Works.", "Works.\n    /// @param gone nothing"),
                 "a reference to nothing": THING.replace("Works.", "Works, see @ref Nothing.")}
        for what, header in wrong.items():
            with self.subTest(what):
                root = self.tree_with(header)
                _, complaint = self.write(root)
                shutil.rmtree(root)
                self.assertIn("qrtThing.h", complaint or "it passed")


if __name__ == "__main__":
    ROOT = Path(sys.argv.pop(1)).resolve()
    unittest.main()
