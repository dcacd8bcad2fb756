#!/usr/bin/env python3
"""What check_docs.py lets pass, and what it does not."""
import tempfile
import unittest
from pathlib import Path

import check_docs


class CheckDocs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name).resolve()
        (self.root / "docs").mkdir()
        (self.root / "scripts").mkdir()
        (self.root / "scripts/go.sh").touch()
        (self.root / "scripts/with-display.sh").touch()
        (self.root / "CMakePresets.json").write_text('{"configurePresets": [{"name": "dev"}]}')
        (self.root / "docs/other.md").write_text("# One `thing`, and another\n\n```sh\n# no heading\n```\n")
        (self.root / "host.cpp").write_text("int main() {\n    int a = 1;\n    int b = 2;\n    return a - b;\n}\n")
        program = self.root / "qrtplay"
        program.write_text('#!/bin/sh\n[ "$1" = render ] && echo "  --output FILE" || echo "  --loop"\n')
        program.chmod(0o755)
        self.program = check_docs.Program(str(program))

    def errors(self, text):
        path = self.root / "docs/guide.md"
        path.write_text(text)
        return check_docs.check(path, self.root, self.program)

    def test_links_that_lead_somewhere(self):
        self.assertEqual(self.errors("# A title\n[a](other.md) ![b](../host.cpp) [c](https://x.y/z) [d](#a-title)\n"
                                     "[e](other.md#one-thing-and-another) [two\nlines](../docs)\n"), [])

    def test_links_that_do_not(self):
        for target in ("missing.md", "../../etc/passwd", "other.md#no-heading", "#nothing", "/etc/passwd"):
            self.assertEqual(len(self.errors(f"# A title\n[a]({target})\n")), 1, target)

    def test_links_in_code_are_none(self):
        self.assertEqual(self.errors("Text\n\n    [a](b)\n\n```text\n[a](b)\n```\n"), [])

    def test_links_alone(self):
        self.assertEqual(check_docs.all_errors(["--links", self.root])[1], [])
        (self.root / "docs/guide.md").write_text("[a](other.md) [b](gone.md)\n\n```cpp\nfrom nowhere\n```\n")
        self.assertEqual(len(check_docs.all_errors(["--links", self.root])[1]), 1)
        self.assertEqual(len(check_docs.all_errors(["--links", self.root / "docs"])[0]), 2)

    def test_quotations(self):
        quote = "<!-- host.cpp -->\n```cpp\n{}\n```\n"
        for right in ("int main() {", "int a = 1;\nint b = 2;", "    int a = 1;\n    // ...\n    return a - b;"):
            self.assertEqual(self.errors(quote.format(right)), [], right)
        for wrong in ("int c;", "int a = 1;\nreturn a - b;", "return a - b;\n// ...\nint a = 1;",
                      "int a = 1;\n    int b = 2;"):
            self.assertEqual(len(self.errors(quote.format(wrong))), 1, wrong)

    def test_code_has_a_source(self):
        self.assertEqual(len(self.errors("```cpp\nint main() {\n```\n")), 1)
        self.assertEqual(len(self.errors("<!-- host.cpp -->\nText between\n\n```cpp\nint main() {\n```\n")), 1)
        self.assertEqual(len(self.errors("<!-- gone.cpp -->\n```cpp\nint main() {\n```\n")), 1)
        self.assertEqual(self.errors("```text\nanything\n```\n"), [])
        self.assertEqual(len(self.errors("<!-- host.cpp -->\n```text\nanything\n```\n")), 1)

    def test_scripts_and_presets(self):
        self.assertEqual(self.errors("Text\n\n    scripts/go.sh   goes\n    cmake --preset dev\n"), [])
        self.assertEqual(len(self.errors("Text\n\n    scripts/gone.sh\n")), 1)
        self.assertEqual(len(self.errors("```sh\ncmake --preset gone\n```\n")), 1)

    def test_options_of_the_program(self):
        for right in ("qrtplay a.mov --loop", "QRT=1 scripts/with-display.sh build/bin/qrtplay render a --output b",
                      "qrtplay render a   --whatever is said about it"):
            self.assertEqual(self.errors(f"```sh\n{right}\n```\n"), [], right)
        for wrong in ("qrtplay a.mov --output b", "qrtplay render a --loop",
                      "scripts/with-display.sh build/bin/qrtplay info a --output b"):
            self.assertEqual(len(self.errors(f"```sh\n{wrong}\n```\n")), 1, wrong)


if __name__ == "__main__":
    unittest.main()
