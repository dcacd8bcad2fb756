#!/usr/bin/env python3
"""Writes the manual page of qrtplay, compressed, from what its --help says, so that the two cannot differ.

  man-page.py QRTPLAY VERSION OUTPUT
"""
import gzip
import re
import subprocess
import sys

ENVIRONMENT = {
    "DISPLAY": "The X server that the window and OpenGL need.",
    "WAYLAND_DISPLAY": "The Wayland compositor in its place.",
    "QT_QPA_PLATFORM": "The platform plug-in of Qt where it is not to choose one itself, such as xcb.",
    "TMPDIR": "Where bundles (.otioz) are unpacked and self-test writes its movie; /tmp without it.",
    "OCIO": "The OpenColorIO configuration where --ocio names none.",
    "QRT_PREF_NAME": "Fixes the preference NAME of the engine for the whole process.",
    "QRT_TRACE_PLAYER": "A file for what the engine does, and when, as with --trace.",
    "QRT_DEBUG_PLAYER": "When set, the engine tells every step on the log channel QRT_PLAYER.",
    "QT_LOGGING_RULES": "Which log channels are written to standard error, as Qt documents it.",
    "TOLLAN_DUMP_VERSION_INFO": "A number other than 0: the version of the library goes to standard error when it is loaded.",
    "ZR_DEBUG_OTIO": "When set, the library tells on standard error what it reads in play parameters.",
}


def escape(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text[:1] in (".", "'") else text


def option_line(line):
    """The .TP entry of a line such as '  --start FRAME     Begins at ...'."""
    match = re.fullmatch(r"  (--[\w-]+)(?: (\S+))? +(\S.*)", line)
    name, value, text = match.groups()
    head = f"\\fB{escape(name)}\\fR" + (f" \\fI{escape(value)}\\fR" if value else "")
    return [".TP", head, escape(text)]


def block(lines):
    """One paragraph of a help text: a list of options, lines to keep as they are, or running text."""
    out = []
    if not lines[0].startswith(" ") and len(lines) > 1 and lines[1].startswith("  "):
        out += [".PP", escape(lines[0])]
        lines = lines[1:]
    if lines[0].startswith("  --"):
        for line in lines:
            out += option_line(line) if line.startswith("  --") else [escape(line.strip())]
        return out
    if any(line.startswith("  ") for line in lines):
        return out + [".RS 4", ".nf", *map(escape, lines), ".fi", ".RE"]
    return out + [".PP", *map(escape, lines)]


def paragraphs(text):
    return [part.split("\n") for part in re.split(r"\n\s*\n", text.strip("\n"))]


def main():
    program, version, output = sys.argv[1:]

    def ask(*words):
        return subprocess.run([program, *words, "--help"], check=True, capture_output=True, text=True).stdout

    overview = ask()
    usage = re.search(r"Usage:\n((?:  .*\n)+)", overview).group(1)
    commands = ["view", *re.findall(r"^  qrtplay ([a-z][a-z-]*)", usage, re.M)]
    about = overview.split("\n", 1)[0]
    exit_status = re.search(r"Exit status: ((?:.*\n)+)", overview).group(1)
    inputs = re.search(r"^A FILE is .*$", overview, re.M).group(0)

    page = [f'.TH QRTPLAY 1 "" "qrtplay {version}" "User Commands"', ".SH NAME",
            "qrtplay \\- play media and timelines through the QRT player", ".SH SYNOPSIS", ".nf",
            *(escape(line.strip()) for line in usage.splitlines()), ".fi",
            ".SH DESCRIPTION", escape(about), ".PP", escape(inputs), ".SH COMMANDS"]
    for command in commands:
        first, *rest = paragraphs(ask(command))
        page += [".SS " + command, f"\\fB{escape(first[0].removeprefix('Usage: '))}\\fR"]
        for part in rest:
            page += block(part)
    page += [".SH EXIT STATUS", *(escape(line) for line in exit_status.strip().splitlines()), ".SH ENVIRONMENT"]
    for name, text in ENVIRONMENT.items():
        page += [".TP", f"\\fB{name}\\fR", escape(text)]
    page += [".SH SEE ALSO", "ffmpeg(1), xvfb\\-run(1)"]
    with open(output, "wb") as file:
        file.write(gzip.compress(("\n".join(page) + "\n").encode(), mtime=0))


main()
