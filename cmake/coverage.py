#!/usr/bin/env python3
"""coverage.py FOLDER: reports which lines and branches of the library the tests of a build have run.

The folder is that of a build with TQ_COVERAGE; its tests leave counts in FOLDER/counts. Prints a table of
rooms and the files below 95 % of lines or 85 % of branches; writes FOLDER/branches.txt, the conditions
that were never true, or never false. The exit status is 1 if the library as a whole is below 98 % of
lines or 90 % of branches. Of the instances of a template, the one that ran most counts.
"""

import collections
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
SOURCE = ROOT / "Modules/TQFoundation/Source"
NAME = re.compile(r".*Modules/TQFoundation/(?:Source|Include/TQFoundation)/(.*)")
KINDS = ("lines", "branches")
FILE_BARS = (95, 85)  # per cent
BARS = (98, 90)


def programs(build):
    """Returns the library and the test programs of a build."""
    found = [path for path in (build / "Modules/TQFoundation").iterdir()
             if path.name.startswith(("TQ", "libTQ")) and path.is_file() and not path.is_symlink()]
    return sorted(path for path in found if path.suffix in ("", ".so") or ".so." in path.name)


def report(build):
    """Returns llvm-cov's report on the library's source files, by name within SOURCE."""
    merged = build / "all.profdata"
    subprocess.run(["llvm-profdata-16", "merge", "--sparse", "-o", merged,
                    *(build / "counts").iterdir()], check=True)
    objects = [word for program in programs(build) for word in ("--object", program)]
    # Its warnings are about inline functions that some program does not call.
    text = subprocess.run(["llvm-cov-16", "export", "--skip-functions", f"--instr-profile={merged}",
                           *objects[1:]],
                          check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    names = ((NAME.fullmatch(file["filename"]), file) for file in json.loads(text)["data"][0]["files"])
    return {name[1]: file for name, file in names if name}


def untaken(file):
    """Yields the conditions of a file that were never true, or never false."""
    runs = collections.defaultdict(lambda: [0, 0])
    for line, column, _, _, true, false, *_ in file["branches"]:
        runs[line, column][0] += true
        runs[line, column][1] += false
    for (line, column), counts in sorted(runs.items()):
        if 0 in counts:
            never = "run" if counts == [0, 0] else "false" if counts[0] else "true"
            yield line, column, never


def shares(tally):
    return [100 * run / count if count else 100 for count, run in tally]


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    files = report(build)
    tallies = collections.defaultdict(lambda: [[0, 0], [0, 0]])  # of lines, of branches: all, run
    for name, file in files.items():
        for place in (name, name.partition("/")[0], "total"):
            for tally, kind in zip(tallies[place], KINDS):
                tally[0] += file["summary"][kind]["count"]
                tally[1] += file["summary"][kind]["covered"]
    with open(build / "branches.txt", "w", encoding="utf-8") as output:
        for name, file in sorted(files.items()):
            text = (SOURCE / name).read_text().splitlines()
            for line, column, never in untaken(file):
                print(f"{name}:{line}:{column}: never {never}: {text[line - 1].strip()}", file=output)

    print(f"{'room':<15} {'lines':>8} {'covered':>9} {'branches':>9} {'covered':>10}")
    for name in [*sorted({name.partition("/")[0] for name in files}), "total"]:
        (lines, _), (branches, _) = tallies[name]
        print("{:<15} {:8} {:7.1f} % {:9} {:8.1f} %".format(
            name, lines, shares(tallies[name])[0], branches, shares(tallies[name])[1]))

    def is_below(name, bars):
        return any(share < bar for share, bar in zip(shares(tallies[name]), bars))

    below = [name for name in sorted(files) if is_below(name, FILE_BARS)]
    print(f"\nfiles below {FILE_BARS[0]} % of lines or {FILE_BARS[1]} % of branches: {len(below)}")
    for name in below:
        print("  {:<52} {:6.1f} % {:7.1f} %".format(name, *shares(tallies[name])))
    return is_below("total", BARS)


if __name__ == "__main__":
    sys.exit(main())
