#!/usr/bin/env python3
"""Counts the instructions of what must stay cheap, under callgrind, and compares them with budgets.json.

Exit status: 0 within the budgets, 1 above one of them or when the counting failed, 77 when there is nothing to count
with or nothing to compare with.
"""
import argparse
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

BUDGETS = pathlib.Path(__file__).resolve().parent / "budgets.json"
RECORD = "cmake --build --preset dev --target qrtRecordInstructions"
ABOVE = 1.1  # of the budget: fails
BELOW = 0.8  # of the budget: it should be lowered
SKIPPED = 77


def instructions_of(valgrind, program, name):
    """How many instructions the function `name` and what it calls take altogether."""
    with tempfile.TemporaryDirectory() as folder:
        output = pathlib.Path(folder) / "callgrind.out"
        command = [valgrind, "--tool=callgrind", f"--callgrind-out-file={output}", f"--toggle-collect={name}",
                   program, name]
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        totals = re.search(r"^(?:totals|summary): (\d+)", output.read_text() if output.exists() else "", re.MULTILINE)
    if result.returncode != 0 or not totals or int(totals.group(1)) == 0:
        sys.exit(f"check.py: {name} could not be counted:\n{result.stderr}")
    return int(totals.group(1))


def count_all(valgrind, program):
    """Instructions for doing each work once."""
    listing = subprocess.run([program], capture_output=True, text=True, check=True).stdout
    works = [line.split() for line in listing.splitlines()]
    return {name: round(instructions_of(valgrind, program, name) / int(times)) for name, times in works}


def compare(counts, budgets):
    """Prints how each count stands to its budget; says whether all are within."""
    is_within = True
    for name, count in counts.items():
        budget = budgets.get(name)
        if budget is None:
            verdict, is_within = f"has no budget; record one: {RECORD}", False
        elif count > ABOVE * budget:
            verdict, is_within = "TOO MANY", False
        elif count < BELOW * budget:
            verdict = f"far below: lower the budget: {RECORD}"
        else:
            verdict = "within"
        print(f"{name:24} {count:>12,} instructions, budget {budget or 0:>12,}: {verdict}")
    return is_within


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--compiler", required=True, help="what the program was compiled with: budgets are kept for each")
    parser.add_argument("--record", action="store_true", help="make what is counted now the budgets")
    arguments = parser.parse_args()

    valgrind = shutil.which("valgrind")
    if not valgrind:
        print("skipped: valgrind is missing; scripts/setup.sh installs it")
        sys.exit(1 if arguments.record else SKIPPED)
    known = json.loads(BUDGETS.read_text(encoding="utf-8")) if BUDGETS.exists() else {}
    if not arguments.record and arguments.compiler not in known:
        print(f"skipped: no budgets are recorded for {arguments.compiler}; record them: {RECORD}")
        sys.exit(SKIPPED)
    counts = count_all(valgrind, arguments.program)
    if arguments.record:
        known[arguments.compiler] = counts
        BUDGETS.write_text(json.dumps(known, indent=4) + "\n", encoding="utf-8")
    sys.exit(0 if compare(counts, known[arguments.compiler]) else 1)


if __name__ == "__main__":
    main()
