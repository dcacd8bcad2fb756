#!/usr/bin/env python3
"""Checks what the documents say against what is there.

  check_docs.py ROOT [QRTPLAY]
  check_docs.py --links FOLDER

Links lead to files of the tree and to headings of documents. Code in C++, CMake or make, and whatever else follows a
comment that names a file, is quoted from that file, line by line; a line with nothing but "..." in a comment stands for
what is left out. Commands
in other blocks name scripts and presets that exist and, with QRTPLAY, options that its help knows. With --links only the
links are checked, of all documents in a folder: those that are installed, for instance.
"""
import json
import re
import subprocess
import sys
from pathlib import Path

QUOTED = {"cpp", "cmake", "make"}
LINK = re.compile(r"!?\[[^\]]*\]\(([^)\s]+)\)")
FENCE = re.compile(r"^```(\w*)\s*$")
SOURCE = re.compile(r"^<!-- (\S+) -->$")
GAP = re.compile(r"^\s*(//|#) \.\.\.$")


def headings(text):
    """The anchors of a document's headings, as code hosts make them."""
    outside = re.sub(r"^```.*?^```", "", text, flags=re.M | re.S)
    titles = re.findall(r"^#+ +(.*)$", outside, re.M)
    titles = [LINK.sub(lambda link: link.group(0).split("]")[0].lstrip("!["), title) for title in titles]
    return {re.sub(r"[^\w\- ]", "", title.lower()).strip().replace(" ", "-") for title in titles}


class Block:
    """A piece of code: its first line's number, its language ("" for none), its lines, and the file before it."""

    def __init__(self, line, language, source=None):
        self.line, self.language, self.source, self.lines = line, language, source, []


def blocks(text):
    """All fenced and indented blocks, and the text around them with the code taken out."""
    found, prose, current, source = [], [], None, None
    is_indented = False
    for number, line in enumerate(text.splitlines(), 1):
        fence = FENCE.match(line)
        if current and not is_indented:
            if fence:
                current = None
            else:
                current.lines.append(line)
        elif fence:
            current, is_indented = Block(number + 1, fence.group(1), source), False
            found.append(current)
        elif line.startswith("    ") and (is_indented and current or not prose or not prose[-1].strip()):
            if not (current and is_indented):
                current, is_indented = Block(number, ""), True
                found.append(current)
            current.lines.append(line[4:])
        else:
            current, is_indented = None, False
            prose.append(line)
            if line.strip():
                match = SOURCE.match(line)
                source = match.group(1) if match else None
    return found, "\n".join(prose)


def dedent(lines):
    """Without the indentation that the first line has."""
    first = next((line for line in lines if line.strip()), "")
    indent = len(first) - len(first.lstrip())
    return [line[indent:] if not line[:indent].strip() else line for line in lines]


def quote_error(block, root):
    """What is wrong with a quotation, or None."""
    if not block.source:
        return f"{block.language} code without a comment that names the file it is quoted from"
    path = root / block.source
    if not path.is_file():
        return f"quoted from {block.source}, which is not there"
    original = path.read_text().splitlines()
    pieces, piece = [], []
    for line in block.lines + [None]:
        if line is None or GAP.match(line):
            pieces.append(piece)
            piece = []
        else:
            piece.append(line)
    begin = 0
    for piece in pieces:
        starts = range(begin, len(original) - len(piece) + 1)
        place = next((i for i in starts if dedent(original[i:i + len(piece)]) == dedent(piece)), None)
        if place is None:
            return f"{block.source} does not say: {piece[0] if piece else ''}"
        begin = place + len(piece)
    return None


class Program:
    """Knows which options the commands of a program have."""

    def __init__(self, path):
        self.path, self.known = path, {}

    def options(self, command):
        if command not in self.known:
            words = [self.path, command, "--help"] if command else [self.path, "--help"]
            text = subprocess.run(words, capture_output=True, text=True, check=True).stdout
            self.known[command] = set(re.findall(r"--[a-z][a-z-]*", text)) | {"--help", "--version"}
        return self.known[command]


def command_errors(block, root, program):
    presets = {preset["name"] for preset in json.loads((root / "CMakePresets.json").read_text())["configurePresets"]}
    for number, line in enumerate(block.lines, block.line):
        for script in re.findall(r"(?<![\w/.-])scripts/[\w.-]+", line):
            if not (root / script).is_file():
                yield number, f"{script} is not there"
        for preset in re.findall(r"--preset[ =]([a-z0-9-]+)", line):
            if preset not in presets:
                yield number, f"there is no preset {preset}"
        match = re.match(r"(?:\S*=\S* |\S*with-display\.sh |\$ )*(?:\S*/)?qrtplay(?: ([a-z][a-z-]*)\b)?(.*)", line)
        if program and match:
            rest = re.sub(r"( {2,}|#).*", "", match.group(2))
            commands = {"render", "contact-sheet", "info", "self-test", "view"}
            command = match.group(1) if match.group(1) in commands else ""
            for option in re.findall(r"(?<=\s)--[a-z][a-z-]*", rest):
                if option not in program.options(command):
                    yield number, f"qrtplay {command} has no option {option}"


def link_errors(path, prose, root):
    for target in LINK.findall(prose):
        if re.match(r"[a-z]+:", target):
            continue
        name, _, anchor = target.partition("#")
        place = (path.parent / name).resolve() if name else path
        if not place.exists() or root not in [place, *place.parents]:
            yield f"the link to {target} leads nowhere"
        elif anchor and place.suffix == ".md" and anchor not in headings(place.read_text()):
            yield f"{target}: there is no such heading"


def check(path, root, program=None):
    """All that is wrong with one document, as "file:line: what"."""
    found, prose = blocks(path.read_text())
    name = path.relative_to(root)
    errors = [f"{name}: {error}" for error in link_errors(path, prose, root)]
    for block in found:
        if block.source or block.language in QUOTED:
            error = quote_error(block, root)
            errors += [f"{name}:{block.line}: {error}"] if error else []
        else:
            errors += [f"{name}:{number}: {error}" for number, error in command_errors(block, root, program)]
    return errors


def all_errors(arguments):
    """The documents that the arguments mean, and all that is wrong with them."""
    if arguments[0] == "--links":
        root = Path(arguments[1]).resolve()
        documents = sorted(root.glob("**/*.md"))
        return documents, [f"{path.relative_to(root)}: {error}" for path in documents
                           for error in link_errors(path, blocks(path.read_text())[1], root)]
    root = Path(arguments[0]).resolve()
    program = Program(arguments[1]) if len(arguments) > 1 else None
    documents = [path for folder in (".", "docs", "benchmarks", "tests", "hosts", "examples", "packaging")
                 for path in sorted((root / folder).glob("*.md" if folder == "." else "**/*.md"))]
    return documents, [error for path in documents for error in check(path, root, program)]


def main():
    documents, errors = all_errors(sys.argv[1:])
    print("\n".join(errors) if errors else f"{len(documents)} documents are right")
    sys.exit(1 if errors or not documents else 0)


if __name__ == "__main__":
    main()
