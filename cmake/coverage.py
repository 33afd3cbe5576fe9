#!/usr/bin/env python3
"""coverage.py FOLDER: reports which lines and branches of the library the tests of a build have run.

The folder is that of a build with TQ_COVERAGE; its tests leave counts in FOLDER/counts. Prints a table of
rooms and the files below 95 % of lines or 85 % of branches; writes FOLDER/untaken.txt, the lines that
were not run, and the conditions that were never true, or never false. The exit status is 1 if the library
as a whole is below 98 % of lines or 90 % of branches.

The instances of a template, and the copies of an inline function in several programs, are one.
"""

import collections
import concurrent.futures
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
SOURCE = ROOT / "Modules/TQFoundation/Source"
NAME = re.compile(r".*Modules/TQFoundation/(?:Source|Include/TQFoundation)/(.*)")
SKIPPED, GAP = 2, 3  # kinds of regions
FILE_BARS = (95, 85)  # per cent of lines, of branches
BARS = (98, 90)


def programs(build):
    """Returns the library and the test programs of a build."""
    found = [path for path in (build / "Modules/TQFoundation").iterdir()
             if path.name.startswith(("TQ", "libTQ")) and path.is_file() and not path.is_symlink()]
    return sorted(path for path in found if path.suffix == "" or ".so." in path.name)


def functions(program, profile):
    """Yields the functions of a program with their counts."""
    # A program that knows an inline function without calling it hides its counts in other programs.
    # Hence one report for each.
    text = subprocess.run(["llvm-cov-16", "export", f"--instr-profile={profile}", program], check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    yield from json.loads(text)["data"][0]["functions"]


def counts_of_lines(regions):
    """Returns how often each line of nested regions was run; outer regions come first. A line counts as
    the innermost region that contains its beginning, or as one that begins in it, whichever ran more."""
    counts = {}
    for first, _, last, _, count, *_, kind in regions:
        if kind != GAP:
            counts[first] = max(count, counts.get(first, 0))
        counts.update((line, count) for line in range(first + 1, last + 1))
    return counts


def innermost_count(regions, line, column):
    """Returns the count of the last region that contains the place."""
    return [count for first, left, last, right, count, *_ in regions
            if (first, left) <= (line, column) < (last, right)][-1]


def add(counts, place, ways):
    counts[place] = [a + b for a, b in zip(counts.get(place, (0, 0)), ways)]


def counts_of(program, profile):
    """Returns the counts of lines by (file, line), and those of conditions, true and false, by (file,
    line, column)."""
    lines, conditions = {}, {}
    for function in functions(program, profile):
        for number, path in enumerate(function["filenames"]):
            name = NAME.fullmatch(path)
            regions = sorted(
                (region for region in function["regions"] if region[5] == number and region[7] != SKIPPED),
                key=lambda region: (region[0], region[1], -region[2], -region[3]))
            if not name or not regions:
                continue
            for line, count in counts_of_lines(regions).items():
                add(lines, (name[1], line), [count])
            for line, column, _, _, true, false, file, *_ in function["branches"]:
                # Constant conditions are never counted, though their region is.
                if file == number and (true or false or not innermost_count(regions, line, column)):
                    add(conditions, (name[1], line, column), [true, false])
    return lines, conditions


def counts(build):
    """Returns the counts of all programs together, as counts_of() does."""
    profile = build / "all.profdata"
    subprocess.run(["llvm-profdata-16", "merge", "--sparse", "-o", profile,
                    *(build / "counts").iterdir()], check=True)
    result = {}, {}
    with concurrent.futures.ProcessPoolExecutor() as pool:
        for task in [pool.submit(counts_of, program, profile) for program in programs(build)]:
            for into, found in zip(result, task.result()):
                for place, ways in found.items():
                    add(into, place, ways)
    return result


def write_untaken(file, lines, conditions):
    untaken = [(*place, "not run") for place, ways in lines.items() if ways == [0]]
    for (name, line, column), ways in conditions.items():
        if ways.count(0) == 1:
            untaken.append((name, line, f"{column}: never {'true' if ways[0] == 0 else 'false'}"))
    for name, line, what in sorted(untaken):
        text = (SOURCE / name).read_text().splitlines()[line - 1].strip()
        print(f"{name}:{line}: {what}: {text}", file=file)


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    both = counts(build)
    with open(build / "untaken.txt", "w", encoding="utf-8") as file:
        write_untaken(file, *both)

    tallies = collections.defaultdict(lambda: [[0, 0], [0, 0]])  # of lines, of branches: run, all
    for kind, places in enumerate(both):
        for (file, *_), ways in places.items():
            for name in (file, file.partition("/")[0], "total"):
                tallies[name][kind][0] += len(ways) - ways.count(0)
                tallies[name][kind][1] += len(ways)

    def shares(name):
        return [100 * run / count if count else 100 for run, count in tallies[name]]

    def is_below(name, bars):
        return any(share < bar for share, bar in zip(shares(name), bars))

    print(f"{'room':<15} {'lines':>8} {'covered':>9} {'branches':>9} {'covered':>10}")
    for name in [*sorted(name for name in tallies if "/" not in name and name != "total"), "total"]:
        (_, lines), (_, branches) = tallies[name]
        print("{:<15} {:8} {:7.1f} % {:9} {:8.1f} %".format(
            name, lines, shares(name)[0], branches, shares(name)[1]))
    below = [name for name in sorted(tallies) if "/" in name and is_below(name, FILE_BARS)]
    print(f"\nfiles below {FILE_BARS[0]} % of lines or {FILE_BARS[1]} % of branches: {len(below)}")
    for name in below:
        print("  {:<52} {:6.1f} % {:7.1f} %".format(name, *shares(name)))
    return is_below("total", BARS)


if __name__ == "__main__":
    sys.exit(main())
