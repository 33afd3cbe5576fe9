#!/usr/bin/env python3
"""Fails if the library has become slower, compared with the peers of the benchmarks.

    gate.py            compares with ratios.tsv beside this file
    gate.py --write    measures the ratios and writes them there
    gate.py --base REV compares with that version first, without the file

A ratio is the peer's time divided by ours; both run in turns, and the best of five short runs of each
counts. A row fails if its ratio is more than a fifth below the file's in each of three attempts. Other
machines have other ratios, so the last word has an earlier version, built here: the row fails if ours
takes a quarter longer than that version's, in three attempts again. The version is where this branch
leaves the main one; on the main branch, the one before the file was written. Without it (a checkout
without history) nothing is decided.
"""

import argparse
import collections
import json
import pathlib
import statistics
import subprocess
import sys

from report import NANOSECONDS

ROOT = pathlib.Path(__file__).resolve().parents[3]
FILE = pathlib.Path(__file__).with_name("ratios.tsv")
PROGRAMS = "build/bench/Modules/TQFoundation/Benchmarks"
LARGEST_FALL = 0.8
ATTEMPTS = 3

Row = collections.namedtuple("Row", "program subject arguments peer")
ROWS = [Row(*row) for row in (
    ("TQJSON", "ModelDecode", "/shapes:1000", "RapidJSONByHand"),
    ("TQJSON", "ModelEncode", "/shapes:1000", "RapidJSONByHand"),
    ("TQJSON", "TreeParse", "/shapes:1000", "RapidJSON"),
    ("TQJSON", "TreeEncode", "/shapes:1000", "RapidJSON"),
    ("TQJSON", "NumberText", "", "ToChars"),
    ("TQGeometry", "Cubic_Length", "", "2geom"),
    ("TQGeometry", "Cubic_Intersections", "", "2geom"),
    ("TQGeometry", "Rect_Union", "/rects:65536", "2geom"),
    ("TQSpatial", "RTreeInsert", "<16>/rects:10000/place:0", "Boost"),
    ("TQSpatial", "RTreeIntersects", "<8>/hit:1/rects:10000/place:0", "Boost"),
    ("TQComparison", "Difference", "/elements:10000/changes:100", "dtl"),
    ("TQConcurrency", "ComputedLazily", "", "CallOnce"),
    ("TQConcurrency", "Reenter", "", "RecursiveMutex"),
)]


def label(row):
    return f"{row.subject}{row.arguments} {row.peer}"


def times(root, row, who, repetitions=5):
    """The shortest time of each of `who`, which run in turns."""
    names = "|".join(who)
    output = subprocess.run(
        [root / PROGRAMS / f"{row.program}Benchmarks", "--benchmark_format=json",
         f"--benchmark_filter=^BM_{row.subject}_({names}){row.arguments}$",
         f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.05",
         "--benchmark_enable_random_interleaving=true"],
        check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    shortest = {}
    for run in json.loads(output)["benchmarks"]:
        if run["run_type"] == "iteration":
            name = run["run_name"].removeprefix(f"BM_{row.subject}_").removesuffix(row.arguments)
            time = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
            shortest[name] = min(time, shortest.get(name, time))
    if set(shortest) != set(who):
        raise SystemExit(f"{label(row)}: the benchmarks are {sorted(shortest)}, not {sorted(who)}")
    return shortest


def ratio_of(row):
    measured = times(ROOT, row, ("TQ", row.peer))
    return measured[row.peer] / measured["TQ"]


def git(*arguments):
    result = subprocess.run(["git", *arguments], cwd=ROOT, stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, text=True)
    return result.stdout.strip() if result.returncode == 0 else ""


def earlier_version():
    head = git("rev-parse", "HEAD")
    base = git("merge-base", "HEAD", "origin/HEAD")
    if base and base != head:
        return base
    written = git("log", "-1", "--format=%H", "--", str(FILE))
    return git("rev-parse", "--verify", "--quiet", f"{written}^") if written else ""


def built(version, programs):
    """Builds the benchmarks of a version and returns its folder, or None if it cannot be checked out."""
    folder = ROOT / "build" / "base"
    git("worktree", "remove", "--force", str(folder))
    added = subprocess.run(["git", "worktree", "add", "--detach", "--quiet", folder, version], cwd=ROOT)
    if added.returncode != 0:
        return None
    subprocess.run(["cmake", "--preset", "bench"], cwd=folder, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", "bench", "--target",
                    *(f"{program}Benchmarks" for program in programs)], cwd=folder, check=True)
    return folder


def is_slower(row, base):
    """Compares with the earlier version, in turns."""
    best = 0.0
    for _ in range(ATTEMPTS):
        now, before = [], []
        for _ in range(5):
            now.append(times(ROOT, row, ("TQ",), 2)["TQ"])
            before.append(times(base, row, ("TQ",), 2)["TQ"])
        best = max(best, min(before) / min(now))
        if best >= LARGEST_FALL:
            break
    print(f"{'SLOWER' if best < LARGEST_FALL else 'as fast':8} {label(row)}: "
          f"{best:.2f} of the earlier version's speed", flush=True)
    return best < LARGEST_FALL


def fallen(expected):
    """The rows whose ratios have fallen below the file's."""
    rows = []
    for row in ROWS:
        best = 0.0
        for _ in range(ATTEMPTS):
            best = max(best, ratio_of(row))
            if best >= LARGEST_FALL * expected[label(row)]:
                break
        else:
            rows.append(row)
        print(f"{'fallen' if row in rows else 'holds':8} {label(row)}: "
              f"{best:.2f}, {expected[label(row)]:.2f} in the file", flush=True)
    return rows


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--base", metavar="REV")
    options = parser.parse_args()
    if options.write:
        lines = [f"{label(row)}\t{statistics.median(ratio_of(row) for _ in range(5)):.2f}\n"
                 for row in ROWS]
        FILE.write_text("".join(lines))
        print("".join(lines), end="")
        return 0
    if options.base:
        doubtful, version = ROWS, options.base
    else:
        lines = [line.split("\t") for line in FILE.read_text().splitlines()]
        doubtful = fallen({name: float(ratio) for name, ratio in lines})
        version = earlier_version() if doubtful else ""
    slower = []
    base = built(version, sorted({row.program for row in doubtful})) if version else None
    if base:
        slower = [row for row in doubtful if is_slower(row, base)]
        git("worktree", "remove", "--force", str(base))
    elif doubtful:
        print("not decided: there is no earlier version here to compare with")
        if options.base:
            return 1
    print(f"{len(ROWS) - len(slower)} passed, {len(slower)} failed")
    return 1 if slower else 0


if __name__ == "__main__":
    sys.exit(main())
