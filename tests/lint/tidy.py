#!/usr/bin/env python3
"""Runs clang-tidy on the bundles that the libraries and the host are compiled in, and only on those that have changed.

  tidy.py --build FOLDER --clang-tidy PROGRAM SOURCE_FOLDER

FOLDER has a compile_commands.json for Clang. What is clean leaves a stamp there that lists the files it was made of,
and has the time at which they began to be read.
"""

import argparse
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor


class Bundle:
    def __init__(self, entry, arguments):
        self.file = entry["file"]
        self.words = shlex.split(entry["command"])
        self.folder = entry["directory"]
        self.arguments = arguments
        config = (arguments.source / ".clang-tidy").read_text()
        key = hashlib.sha256("\n".join([arguments.version, config, self.file, *self.words]).encode()).hexdigest()
        self.stamp = arguments.build / "lint" / key

    def is_clean(self):
        """Whether nothing has changed since the bundle was found clean."""
        if not self.stamp.exists():
            return False
        made = self.stamp.stat().st_mtime
        files = [pathlib.Path(name) for name in self.stamp.read_text().splitlines()]
        return all(file.exists() and file.stat().st_mtime < made for file in files)

    def own_files(self):
        output = self.words.index("-o")
        command = self.words[:output] + self.words[output + 2 :] + ["-MM"]
        rule = subprocess.run(command, cwd=self.folder, check=True, capture_output=True, text=True).stdout
        return [word for word in rule.replace("\\\n", " ").split()[1:] if word.startswith("/")]

    def check(self):
        """What clang-tidy has to say; empty when all is well."""
        if self.is_clean():
            return ""
        began = time.time()
        command = [self.arguments.clang_tidy, "-p", str(self.arguments.build), "--quiet",
                   f"--config-file={self.arguments.source / '.clang-tidy'}", self.file]
        result = subprocess.run(command, capture_output=True, text=True)
        if result.returncode != 0:
            return result.stdout or result.stderr
        self.stamp.parent.mkdir(exist_ok=True)
        self.stamp.write_text("\n".join(self.own_files()))
        os.utime(self.stamp, (began, began))  # what was edited meanwhile is newer, and has yet to be checked
        return ""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--clang-tidy", required=True)
    parser.add_argument("source", type=pathlib.Path)
    arguments = parser.parse_args()
    arguments.version = subprocess.run([arguments.clang_tidy, "--version"], check=True, capture_output=True,
                                       text=True).stdout
    entries = json.loads((arguments.build / "compile_commands.json").read_text())
    own = tuple(str(root / folder) for root in (arguments.source, arguments.build) for folder in ("src", "hosts"))
    bundles = [Bundle(entry, arguments) for entry in entries
               if entry["file"].startswith(own) and not entry["file"].endswith("mocs_compilation.cpp")]
    if not bundles:
        print("there is nothing to check")
        return 1
    # The largest first, so that the last one to end does not run alone.
    bundles.sort(key=lambda bundle: os.path.getsize(bundle.file), reverse=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = [text for text in pool.map(Bundle.check, bundles) if text]
    print("\n".join(findings))
    print(f"{len(bundles)} bundles, {len(findings)} with findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
