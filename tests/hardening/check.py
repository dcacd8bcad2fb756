#!/usr/bin/env python3
"""Looks for the hardening of cmake/QrtHardening.cmake in binaries, with readelf.

  check.py BINARY... [--fortified BINARY...] [--interfaces BINARY...]
  check.py --lacks-all BINARY...

Fails when a binary lacks any of it. Calls of checked functions of the C library are looked for in the --fortified ones
only: a library may call none that could be checked. The stack protector is not looked for in --interfaces, which have
next to no code. --lacks-all turns everything round.
"""

import argparse
import re
import subprocess
import sys


def read_elf(path):
    command = ["readelf", "--wide", "--file-header", "--program-headers", "--dynamic", "--dyn-syms", path]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def segment_flags(text, name):
    """The flags of the program headers of a name, such as "RW"."""
    return [found.replace(" ", "") for found in re.findall(rf"^ +{name} (?: *0x\w+){{5}} ([R ][W ][E ])", text, re.M)]


def imports(text):
    return set(re.findall(r" UND ([\w]+)(?:@|\s|$)", text))


def missing(path, is_fortified, is_interface=False):
    text = read_elf(path)
    stack = segment_flags(text, "GNU_STACK")
    checked = {name for name in imports(text) if name.endswith("_chk")}
    facts = {
        "position independence": re.search(r"^ +Type: +DYN ", text, re.M) is not None,
        "relocations that are read-only": bool(segment_flags(text, "GNU_RELRO")),
        "binding at start": re.search(r"\((FLAGS|FLAGS_1)\).*\b(BIND_NOW|NOW)\b", text) is not None,
        "a stack without code": bool(stack) and all("E" not in flags for flags in stack),
        "the stack protector": "__stack_chk_fail" in imports(text),
    }
    if is_interface:
        del facts["the stack protector"]
    if is_fortified:
        facts["checked functions of the C library"] = bool(checked)
    return [name for name, is_there in facts.items() if not is_there], len(facts)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("binaries", nargs="*")
    parser.add_argument("--fortified", nargs="*", default=[])
    parser.add_argument("--interfaces", nargs="*", default=[])
    parser.add_argument("--lacks-all", nargs="*", default=[])
    arguments = parser.parse_args()
    failures = 0
    for path in arguments.binaries:
        lacks, _ = missing(path, path in arguments.fortified, path in arguments.interfaces)
        for name in lacks:
            failures += 1
            print(f"{path}: lacks {name}")
    for path in arguments.lacks_all:
        lacks, count = missing(path, True)
        if len(lacks) != count:
            failures += 1
            print(f"{path}: lacks only {', '.join(lacks)}")
    print(f"{len(arguments.binaries) + len(arguments.lacks_all)} binaries, {failures} complaints")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
