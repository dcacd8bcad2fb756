#!/usr/bin/env python3
"""Whether includes keep to the house rules.

  includes.py --build FOLDER SOURCE_FOLDER

A header has "#pragma once", a source includes its own header first, nothing of src/ includes a host, a host or an
example includes nothing of the private folder of src/player, no file includes another twice, what Qt 6 has no longer is
named only where a choice between the versions is made, and every public header compiles alone. FOLDER has a
compile_commands.json for Clang.
"""

import argparse
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

INCLUDE = re.compile(r'^#include ([<"][^>"]+[>"])', re.M)
ONLY_QT_5 = re.compile(r"\b(QtPlatformHeaders|Q(AudioDeviceInfo|DesktopWidget|GLWidget|LinkedList|RegExp|StringRef|TextCodec))\b")


def complaints_about(path, source):
    text = path.read_text()
    name = path.relative_to(source).as_posix()
    included = INCLUDE.findall(text)
    if path.suffix == ".h" and "\n#pragma once\n" not in "\n" + text:
        yield f"{name}: has no #pragma once"
    for twice in sorted({one for one in included if included.count(one) > 1}):
        yield f"{name}: includes {twice} twice"
    if "QT_VERSION_MAJOR" not in text and not path.stem.endswith("Qt5"):
        for one in sorted({match[0] for match in ONLY_QT_5.finditer(text)}):
            yield f"{name}: names {one}, which Qt 6 does not have"
    own = path.with_suffix(".h")
    if path.suffix == ".cpp" and own.exists() and not (included and included[0].strip('<">').endswith(own.name)):
        yield f"{name}: does not include its own header first"
    for one in (each.strip('<">') for each in included):
        if name.startswith("src/") and (source / "hosts/qrtplay" / one).exists():
            yield f"{name}: includes {one} of the host"
        is_private = "private/" in one or (source / "src/player/private" / one).exists()
        if name.startswith(("hosts/", "examples/")) and is_private:
            yield f"{name}: includes {one}, which is private to the player"


def flags_for_public_headers(build):
    """Those of the player's own sources, which include all of them."""
    entries = json.loads((build / "compile_commands.json").read_text())
    words = next(shlex.split(entry["command"]) for entry in entries if "qrtPlayerObjects" in entry["command"])
    kept = ("-I", "-isystem", "-D", "-f", "-W", "-std")
    flags = []
    for i, word in enumerate(words):
        if word.startswith(kept) or words[i - 1] == "-isystem":
            flags.append(word)
    return [words[0], *flags, "-fsyntax-only"]


def compile_alone(header, command):
    lone = [*command, "-Wno-pragma-once-outside-header", "-Wno-unused-const-variable", "-x", "c++", str(header)]
    return subprocess.run(lone, capture_output=True, text=True).stderr


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("source", type=pathlib.Path)
    arguments = parser.parse_args()
    source = arguments.source
    folders = ("src", "hosts", "tests", "benchmarks", "examples")
    paths = [path for folder in folders for path in sorted((source / folder).rglob("*")) if path.suffix in (".h", ".cpp")]
    findings = [line for path in paths for line in complaints_about(path, source)]
    public = [path for path in sorted((source / "src").rglob("*.h")) if "private" not in path.parts]
    command = flags_for_public_headers(arguments.build)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings += [text for text in pool.map(lambda header: compile_alone(header, command), public) if text]
    print("\n".join(findings))
    print(f"{len(paths)} files, {len(public)} public headers alone, {len(findings)} findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
