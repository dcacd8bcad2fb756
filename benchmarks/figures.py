#!/usr/bin/env python3
"""What scripts/bench.sh needs of the benchmarks' figures: which programs to run, the table, and a record of a run.

The goals are in goals.json beside this file: groups of rows, each with the program and the benchmark that measures it.
"""
import argparse
import datetime
import json
import os
import pathlib
import platform
import re
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
HOST_GROUP = "host"
TABLE_BEGIN = "<!-- the table begins: scripts/bench.sh --record writes it -->"
TABLE_END = "<!-- the table ends -->"


def fail(message, status):
    print(f"figures.py: {message}", file=sys.stderr)
    sys.exit(status)


def load(path):
    try:
        with open(path, encoding="utf-8") as file:
            return json.load(file)
    except (OSError, ValueError) as failure:
        return fail(f"{path} cannot be read: {failure}", 1)


# ---- Which programs to run


def plan(names, whole):
    """Prints a line for each program: its name, a tab, and the filter that selects the named groups. Whole: no group of
    a program may be left out, as what is recorded of it takes the place of all that was."""
    groups = load(FOLDER / "goals.json")
    known = [group["name"] for group in groups]
    for name in names:
        if name not in known:
            fail(f"no benchmark is named '{name}'; there are: {', '.join(known)}", 2)
    programs = {group["program"] for group in groups if group["name"] in names}
    left_out = [group["name"] for group in groups if group["program"] in programs and group["name"] not in names]
    if whole and left_out:
        fail(f"only whole programs are recorded: name {', '.join(left_out)} as well", 2)
    filters = {}
    for group in groups:
        if not names or group["name"] in names:
            prefixes = {row["benchmark"].split("/")[0] for row in group["rows"]}
            filters.setdefault(group["program"], set()).update(prefixes)
    for program, prefixes in filters.items():
        print(f"{program}\t^({'|'.join(sorted(prefixes))})(/|$)")


# ---- The table


def name_of(run):
    """A benchmark's own name, without what Google Benchmark adds to it."""
    return re.sub(r"/iterations:.*", "", run)


def figures_of(files):
    """All figures of Google Benchmark's files, by benchmark and name; and the rows of the host's files."""
    figures, host_rows = {}, []
    for path in files:
        content = load(path)
        for run in content.get("benchmarks", []):
            if run.get("error_occurred"):
                fail(f"{run['name']}: {run.get('error_message', 'failed')}", 1)
            name = name_of(run["name"])
            figures.update({(name, key): value for key, value in run.items() if isinstance(value, (int, float))})
        host_rows += content.get("measures", [])
    return figures, host_rows


def number(value):
    if value == 0:
        return "0"
    magnitude = abs(value)
    if magnitude >= 100:
        return f"{value:,.0f}"
    if magnitude < 0.001:
        return f"{value:.1g}"
    return f"{value:.1f}" if magnitude >= 10 else f"{value:.2f}" if magnitude >= 0.1 else f"{value:.3f}"


def with_unit(value, unit):
    if unit.startswith("x"):
        return f"{number(value)}{unit.replace('x', ' ×', 1)}"
    return f"{number(value)} {unit.replace('us', 'µs') if unit == 'us' else unit}"


def verdict(value, at_most, at_least):
    if at_most is None and at_least is None:
        return ""
    if at_most is not None:
        return "met" if value <= at_most else f"missed by {number(value - at_most)}"
    return "met" if value >= at_least else f"missed by {number(at_least - value)}"


def engine_row(row, value):
    if value is None:
        fail(f"{row['benchmark']} has not measured {row['figure']}", 1)
    at_most, at_least = row.get("at_most"), row.get("at_least")
    bound = at_most if at_least is None else at_least
    goal = "" if bound is None else ("at most " if at_least is None else "at least ") + f"{bound:,}"
    # Averages: a step more of rendering ahead now and then, as threads meet, is no allocation of every call.
    compared = round(value) if row["unit"] == "allocations" else value
    return row["work"], with_unit(value, row["unit"]), goal, verdict(compared, at_most, at_least)


def host_row(row):
    goal = re.fullmatch(r"(ratio )?(>=|<=) (\S+)", row["goal"])
    measured = f"{number(row['qrtplay'])} {row['unit']} ({number(row['ratio'])} × loop)"
    work = f"qrtplay, {row['clip']}: {row['case']}"
    if not goal:
        return work, measured, "", ""
    of_ratio, sign, bound = goal.group(1), goal.group(2), float(goal.group(3))
    value = row["ratio"] if of_ratio else row["qrtplay"]
    text = f"{'at least' if sign == '>=' else 'at most'} {bound:g}{' × loop' if of_ratio else ''}"
    bounds = (None, bound) if sign == ">=" else (bound, None)
    return work, measured, text, verdict(value, *bounds)


def table_rows(files):
    figures, host_rows = figures_of(files)
    rows = []
    for group in load(FOLDER / "goals.json"):
        values = [figures.get((row["benchmark"], row["figure"])) for row in group["rows"]]
        if any(value is not None for value in values):  # else it was not asked for
            rows += [engine_row(row, value) for row, value in zip(group["rows"], values)]
        if group["name"] == HOST_GROUP:
            rows += [host_row(row) for row in host_rows]
    if not rows:
        fail("nothing was measured", 1)
    return [("Work", "Measured", "Goal", "")] + rows


def print_table(files):
    rows = table_rows(files)
    widths = [max(len(row[column]) for row in rows) for column in range(4)]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    missed = sum(row[3].startswith("missed") for row in rows)
    judged = sum(row[3] != "" for row in rows)
    print(f"\n{judged - missed} of {judged} goals met")


# ---- Whether goals and programs fit together


def check(folder):
    """Fails when a row's benchmark is not one of its program's: the row would never be measured."""
    for group in load(FOLDER / "goals.json"):
        if not group["rows"]:
            continue
        command = [str(pathlib.Path(folder) / group["program"]), "--benchmark_list_tests"]
        listing = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        known = {name_of(line) for line in listing.splitlines()}
        for row in group["rows"]:
            if row["benchmark"] not in known:
                fail(f"{group['program']} has no benchmark {row['benchmark']}", 1)


# ---- The record


def first_line(*command):
    try:
        output = subprocess.run(command, capture_output=True, text=True, check=True).stdout
    except (OSError, subprocess.CalledProcessError):
        return "unknown"
    return output.splitlines()[0].strip() if output else "unknown"


def debian_version(package):
    return first_line("dpkg-query", "-W", "-f", "${Version}", package)


def machine():
    """What the figures depend on."""
    cpu = next((line.split(":")[1].strip() for line in open("/proc/cpuinfo", encoding="utf-8")
                if line.startswith("model name")), "unknown")
    system = {}
    if os.path.exists("/etc/os-release"):
        lines = open("/etc/os-release", encoding="utf-8").read().splitlines()
        system = dict(line.split("=", 1) for line in lines if "=" in line)
    return {
        "processor": f"{cpu}, {os.cpu_count()} cores",
        "graphics": f"software: Mesa {debian_version('libgl1-mesa-dri')} under Xvfb",
        "system": system.get("PRETTY_NAME", platform.system()).strip('"'),
        "compiler": first_line("c++", "--version"),
        "qt": debian_version("libqt5core5a"),
        "load": " ".join(f"{value:.1f}" for value in os.getloadavg()),
    }


SAME_MACHINE = ("processor", "graphics", "system", "compiler", "qt")


def record(files):
    """Keeps the files under results/, without what tells nothing but whose machine it was, and writes the table of all
    that is kept there into docs/performance.md."""
    results = FOLDER / "results"
    results.mkdir(exist_ok=True)
    here = machine()
    new = {pathlib.Path(path).name for path in files}
    for path in results.glob("*.json"):
        context = load(path)["context"]
        if path.name not in new and any(context[key] != here[key] for key in SAME_MACHINE):
            fail(f"results/{path.name} is from another machine or system: record everything", 1)
    for path in files:
        content = load(path)
        today = datetime.date.today().isoformat()
        content["context"] = {"date": content.get("context", {}).get("date", today)[:10]} | here
        (results / pathlib.Path(path).name).write_text(json.dumps(content, indent=1) + "\n", encoding="utf-8")
    write_table(sorted(results.glob("*.json")), here)


def write_table(files, here):
    document = FOLDER.parent / "docs" / "performance.md"
    text = document.read_text(encoding="utf-8")
    begin, end = text.find(TABLE_BEGIN), text.find(TABLE_END)
    if begin < 0 or end < begin:
        fail(f"{document.name} has no place for the table", 1)
    lines = [f"Recorded on: {here['processor']}; {here['graphics']}; {here['system']};",
             f"{here['compiler']}; Qt {here['qt']}.", ""]
    for path in files:
        context = load(path)["context"]
        lines += [f"- `{path.stem}`: {context['date']}, load {context['load']}"]
    rows = table_rows(files)
    lines += ["", "| " + " | ".join(rows[0]) + " |", "|---|---|---|---|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows[1:]]
    document.write_text(text[:begin] + TABLE_BEGIN + "\n" + "\n".join(lines) + "\n" + text[end:], encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    commands = parser.add_subparsers(dest="command", required=True)
    planning = commands.add_parser("plan", help="which programs to run for some groups")
    planning.add_argument("names", nargs="*")
    planning.add_argument("--whole", action="store_true", help="no group of a program may be left out")
    commands.add_parser("table", help="print the table").add_argument("files", nargs="+")
    commands.add_parser("record", help="keep the figures").add_argument("files", nargs="+")
    commands.add_parser("check", help="compare the goals with the programs").add_argument("folder")
    arguments = parser.parse_args()
    if arguments.command == "plan":
        plan(arguments.names, arguments.whole)
    elif arguments.command == "table":
        print_table(arguments.files)
    elif arguments.command == "record":
        record(arguments.files)
    else:
        check(arguments.folder)


if __name__ == "__main__":
    main()
