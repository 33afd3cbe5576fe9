#!/usr/bin/env python3
"""Makes tables and plots of benchmark results: the library compared with each peer.

    report.py RESULTS.json... [--write docs]

Prints the tables. With --write, also writes them into Benchmarks.md of that folder, each between the
lines `<!-- <program> -->` and `<!-- end -->`, and draws figures/<program>.svg.

A benchmark is called BM_<Subject>_<Who>, ours BM_<Subject>_TQ; a template's argument follows in "<>",
other arguments after "/". The medians of the repetitions are compared: CPU time, real time if the
benchmark requests it, or the counter "bytes_per_value". BM_<Subject>Vs<Who> has run both in turns;
its counter "speedup" is the ratio. "Growth" is the exponent of our time between this case and the
case with a smaller first argument: 1 is linear.
"""

import argparse
import collections
import html
import json
import math
import pathlib
import re

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
COLUMNS = ("benchmark", "arguments", "ours", "growth", "peer", "peer's", "peer's / ours")

Case = collections.namedtuple("Case", "subject arguments ours peers isMemory")
Row = collections.namedtuple("Row", "case peer theirs growth")


def arguments_of(text):
    """The arguments in the order of the name, without those of the framework."""
    kept = [each for each in text.split("/")
            if each and not re.fullmatch(r"(iterations|repeats):\d+|real_time|manual_time", each)]
    return " ".join(kept)


def cases_in(results):
    """Returns the cases of one program, one for each subject and arguments."""
    cases = {}
    for run in results["benchmarks"]:
        if run.get("aggregate_name") != "median":
            continue
        name, _, rest = run["run_name"].partition("/")
        arguments = arguments_of(rest)
        if template := re.search(r"<(.*)>$", name):
            arguments = f"{template[1]} {arguments}".strip()
            name = name[:template.start()]
        isReal = "real_time" in rest or "speedup" in run
        value = run["real_time" if isReal else "cpu_time"] * NANOSECONDS[run["time_unit"]]
        value = run.get("bytes_per_value", value)
        if "speedup" in run:
            subject, _, who = name.removeprefix("BM_").partition("Vs")
            measured = {"TQ": value, who: value * run["speedup"]}
        else:
            subject, _, who = name.removeprefix("BM_").rpartition("_")
            measured = {who: value}
        key = (subject, arguments)
        case = cases.setdefault(key, Case(subject, arguments, [], {}, "bytes_per_value" in run))
        for name, value in measured.items():
            if name == "TQ":
                case.ours[:] = [value]
            else:
                case.peers[name] = value
    return [case for case in cases.values() if case.ours]


def natural(text):
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", text)]


def rows_of(cases):
    """Returns a row for each peer, or one row without a peer, with the growth since the smaller case."""
    rows = []
    smaller = {}
    for case in sorted(cases, key=lambda c: (c.subject, natural(c.arguments))):
        size = re.search(r"\d+", case.arguments)
        family = (case.subject, re.sub(r"\d+", "n", case.arguments, count=1))
        growth = None
        if size and int(size[0]) > 0:
            before = smaller.get(family)
            if before and int(size[0]) >= 2 * before[0]:
                growth = math.log(case.ours[0] / before[1]) / math.log(int(size[0]) / before[0])
            smaller[family] = (int(size[0]), case.ours[0])
        for peer, theirs in sorted(case.peers.items()) or [("", None)]:
            rows.append(Row(case, peer, theirs, growth))
    return rows


def readable(value, isMemory):
    if isMemory:
        return f"{value:.0f} B"
    for limit, unit in ((1e6, "ms"), (1e3, "µs")):
        if value >= limit:
            return f"{value / limit:.2f} {unit}"
    return f"{value:.1f} ns"


def table_of(rows):
    lines = ["| " + " | ".join(COLUMNS) + " |", "|---|---|---:|---:|---|---:|---:|"]
    for case, peer, theirs, growth in rows:
        ours = case.ours[0]
        cells = (case.subject, case.arguments, readable(ours, case.isMemory),
                 f"{growth:.2f}" if growth is not None else "", peer,
                 readable(theirs, case.isMemory) if peer else "",
                 f"{theirs / ours:.2f}×" if peer else "")
        lines.append("| " + " | ".join(cells) + " |")
    return "\n".join(lines)


def plot_of(program, rows):
    """Draws a line for each subject and peer, with a dot for each case on a logarithmic axis of ratios."""
    ratios = collections.defaultdict(list)
    for case, peer, theirs, _ in rows:
        if peer:
            ratios[f"{case.subject} / {peer}"].append(theirs / case.ours[0])
    better = "small" if any(case.isMemory for case, *_ in rows) else "fast"
    everything = [ratio for each in ratios.values() for ratio in each]
    low = min(-1, math.floor(math.log2(min(everything, default=1))))
    high = max(1, math.ceil(math.log2(max(everything, default=1))))
    left, width, step, top = 250, 480, 20, 44
    height = top + step * len(ratios) + 30

    def x(ratio):
        return left + width * (math.log2(ratio) - low) / (high - low)

    def text(at, y, words, extra=""):
        return f'<text x="{at:.1f}" y="{y}" {extra}>{html.escape(words)}</text>'

    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {left + width + 40} {height}" '
           'font-family="sans-serif" font-size="12" fill="#1f2933">',
           '<rect width="100%" height="100%" fill="#fff"/>',
           text(16, 22, f"{program}: how many times as {better} as the peer",
                'font-weight="bold" font-size="14"')]
    every = max(1, math.ceil((high - low) / 12))
    for power in range(low, high + 1):
        at = x(2.0**power)
        colour = "#1f2933" if power == 0 else "#d3d8de"
        out.append(f'<line x1="{at:.1f}" x2="{at:.1f}" y1="{top - 8}" y2="{height - 26}" '
                   f'stroke="{colour}"/>')
        if power % every == 0:
            label = f"{2**power}×" if power >= 0 else f"1/{2**-power}×"
            out.append(text(at, height - 10, label, 'text-anchor="middle" fill="#7b8794"'))
    for number, (label, values) in enumerate(ratios.items()):
        y = top + step * number + 6
        out.append(text(left - 12, y + 4, label, 'text-anchor="end"'))
        for ratio in values:
            colour = "#2563eb" if ratio >= 1 else "#c81e1e"
            out.append(f'<circle cx="{x(ratio):.1f}" cy="{y}" r="4" fill="{colour}" '
                       'fill-opacity="0.6"/>')
    return "\n".join(out + ["</svg>\n"])


def write(docs, program, rows):
    page = docs / "Benchmarks.md"
    begin, end = f"<!-- {program} -->", "<!-- end -->"
    text = page.read_text()
    if begin not in text:
        raise SystemExit(f"{page} has no lines {begin} and {end} for {program}")
    head, _, rest = text.partition(begin)
    tail = rest.partition(end)[2]
    figure = f"figures/{program}.svg"
    page.write_text(f"{head}{begin}\n![Ratios of {program}]({figure})\n\n"
                    f"{table_of(rows)}\n{end}{tail}")
    (docs / figure).write_text(plot_of(program, rows))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", nargs="+", type=pathlib.Path)
    parser.add_argument("--write", type=pathlib.Path, metavar="DOCS")
    options = parser.parse_args()
    for path in options.results:
        rows = rows_of(cases_in(json.loads(path.read_text())))
        print(f"\n{path.stem}\n\n{table_of(rows)}")
        if options.write:
            write(options.write, path.stem, rows)


if __name__ == "__main__":
    main()
