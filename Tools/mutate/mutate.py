#!/usr/bin/env python3
"""Changes one operator, constant or condition of the library at a time, and lists the changes that
the tests do not notice.

    Tools/mutate/mutate.py [--count N] [--seed S] [--room ROOM]... [--again FILE] [--least PERCENT]

Works in copies of the committed tree in build/mutate, one for each processor, which are built with
UndefinedBehaviorSanitizer and the assertions of the C++ library. Not counted are changes that do not
compile, changes that leave the optimised machine code as it was, changes of reserved capacities, and
those in Equivalent.list, which no test can notice. A change that makes the tests hang counts as
noticed. The tests of the room run first, then those of the rooms that may use it and of callbacks, then
the fault suites of these rooms, and the stress suites of the room. The exit status is 1 if the tests
notice less than --least per cent. --again tries what survived in an earlier run, whose output is in the
file.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import queue
import re
import shlex
import shutil
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build/mutate"
EQUIVALENT = ROOT / "Tools/mutate/Equivalent.list"
MODULE = pathlib.Path("Modules/TQFoundation")
LONG = "*Stress*:*Fault*"  # long suites, run last
FAULTS = "*Fault*:*Sick*"
PRESET = "asan"  # changed to check undefined behaviour only, which makes the tests hardly slower

SWAPS = {
    "comparison": {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="},
    "arithmetic": {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "<<": ">>", ">>": "<<"},
    "logic": {"&&": "||", "||": "&&"},
}
CONSTANT = re.compile(r"(?<![\w.'\"])(\d+)(?![\w.'\"])")
TRUTH = re.compile(r"\b(true|false)\b")
ARID = ("#", "static_assert", "using ", "template")  # lines that are not changed
CONDITION = re.compile(r"\b(?:if|while) \((?!const|auto)((?:[^();]|\([^()]*\))+)\)")

Mutant = collections.namedtuple("Mutant", "file line kind before after")


def code_of(line):
    """Returns the line with strings and comments replaced by spaces, with unchanged columns."""
    line = re.sub(r'"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'', lambda m: " " * len(m[0]), line)
    return re.sub(r"//.*", lambda m: " " * len(m[0]), line)


def mutants_of(line):
    """Yields (kind, changed line) for each single change of the line."""
    code = code_of(line)
    if not code.strip() or code.lstrip().startswith(ARID) or "reserve(" in code:
        return

    def changed(begin, end, text):
        return line[:begin] + text + line[end:]

    for kind, swaps in SWAPS.items():
        for match in re.finditer(r"(?<= )(\S{1,2})(?= )", code):
            if match[1] in swaps:
                yield kind, changed(*match.span(1), swaps[match[1]])
    for match in CONSTANT.finditer(code):
        yield "constant", changed(*match.span(1), str(int(match[1]) + 1))
    for match in TRUTH.finditer(code):
        yield "constant", changed(*match.span(1), "false" if match[1] == "true" else "true")
    for match in CONDITION.finditer(code):
        if not match[1].startswith("!("):
            begin, end = match.span(1)
            yield "condition", changed(begin, end, f"!({line[begin:end]})")


class Copy:
    """A copy of the tree with its own build, in which one change is tried at a time."""

    def __init__(self, number):
        self.tree = WORK / f"tree{number}"
        self.build = WORK / f"build{number}"
        self.source = self.tree / MODULE / "Source"
        shutil.rmtree(self.tree, ignore_errors=True)
        self.tree.mkdir(parents=True)
        archive = subprocess.Popen(["git", "-C", ROOT, "archive", "HEAD"], stdout=subprocess.PIPE)
        subprocess.run(["tar", "-x", "-m", "-C", self.tree], stdin=archive.stdout, check=True)
        cmake = ["CXX_FLAGS_RELWITHDEBINFO=-O1 -D_GLIBCXX_ASSERTIONS", "LINK_DEPENDS_NO_SHARED=ON",
                 "EXPORT_COMPILE_COMMANDS=ON"]
        ours = ["SANITIZE=undefined", "UNITE_FOLDERS=HOSTS", "CHECK_HEADERS=OFF", "BUILD_FUZZERS=OFF",
                "BUILD_TOOLS=OFF", "INSTALL=OFF", "WARNINGS_AS_ERRORS=OFF"]
        subprocess.run(["cmake", "--preset", PRESET, "-B", self.build,
                        *("-DCMAKE_" + option for option in cmake),
                        *("-DTQ_" + option for option in ours)],
                       cwd=self.tree, check=True, stdout=subprocess.DEVNULL)
        self.commands = {entry["file"]: entry for entry in
                         json.loads((self.build / "compile_commands.json").read_text())}
        self.programs = {room: self.programs_of(room) for room in self.rooms()}
        self.callbacks = self.programs_of("callbacks")  # call all rooms
        self.known = self.known_rooms()
        self.limits = {}  # seconds for a test program with its suites, once they have passed

    def rooms(self):
        return sorted(p.name for p in self.source.iterdir() if p.is_dir())

    def known_rooms(self):
        """Returns, for each room, the rooms that it may use directly, by name."""
        known = {room: set() for room in self.rooms()}
        for line in (self.tree / MODULE / "Rooms.list").read_text().splitlines():
            if line.startswith("knows "):
                room, *others = (name.partition("/")[0] for name in line.split()[1:])
                known[room].update(others)
        return known

    def users(self, room):
        """Returns the rooms that may use the room, without itself, nearest first."""
        found = [room]
        for used in found:
            found += [user for user in self.known if used in self.known[user] and user not in found]
        return found[1:]

    def programs_of(self, room):
        """Returns the targets of the room's test programs."""
        made = re.compile(r"tq_add_(room|internal)_tests\((\w+)")
        files = (self.tree / MODULE / "Tests" / room).glob("*.cmake")
        return [name + ("InternalTests" if kind == "internal" else "Tests")
                for file in sorted(files) for kind, name in made.findall(file.read_text())]

    def all_programs(self):
        return [name for names in self.programs.values() for name in names] + self.callbacks

    def mutants(self, rooms):
        """Yields each single change. Its file is relative to the source folder."""
        for room in rooms:
            for path in sorted((self.source / room).rglob("*.cpp")):
                for number, line in enumerate(path.read_text().splitlines()):
                    for kind, after in mutants_of(line):
                        yield Mutant(path.relative_to(self.source), number, kind, line, after)

    def run(self, *command, seconds=None):
        """Returns True if the command succeeds within the time limit."""
        try:
            return subprocess.run(command, cwd=self.tree, timeout=seconds,
                                  stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def passes(self, programs, suites="-" + LONG):
        """Builds and runs the suites. Returns True if they pass, None if they do not compile."""
        if not self.run("cmake", "--build", self.build, "--target", *programs):
            return None
        return all(self.run(self.build / MODULE / program, "--gtest_brief=1", "--gtest_fail_fast",
                            f"--gtest_filter={suites}", seconds=self.limits.get((program, suites)))
                   for program in programs)

    def learn(self):
        """Runs all tests without a change, and sets the limits of time by what they take."""
        for program in self.all_programs():
            for suites in ("-" + LONG, LONG, FAULTS):
                begin = time.monotonic()
                if not self.passes([program], suites):
                    sys.exit(f"{program} fails without a change")
                self.limits[program, suites] = 10 + 5 * (time.monotonic() - begin)

    def machine_code(self, path):
        """Compiles the source with optimisation, without sanitizers. Returns the assembler text."""
        entry = self.commands[str(path)]
        words = shlex.split(entry["command"])
        options = [word for word in words[:words.index("-o")] if not word.startswith("-fsanitize")]
        return subprocess.run([*options, "-O2", "-S", "-o", "-", path], cwd=entry["directory"],
                              check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def outcome(self, mutant):
        room = mutant.file.parts[0]
        own = self.programs[room]
        others = [name for user in self.users(room) for name in self.programs[user]]
        others += self.callbacks
        path = self.source / mutant.file
        original = path.read_text()
        lines = original.split("\n")
        lines[mutant.line] = mutant.after
        path.write_text("\n".join(lines))
        try:
            passed = self.passes(own)
            if passed is None:
                return "does not compile"
            if not (passed and self.passes(others) and self.passes(others, FAULTS)
                    and self.passes(own, LONG)):
                return "noticed"
            changed = self.machine_code(path)
        finally:
            path.write_text(original)
        return "no effect" if changed == self.machine_code(path) else "survived"


def key_of(mutant):
    """Returns (file, before, after), stripped."""
    return str(mutant.file), mutant.before.strip(), mutant.after.strip()


def rank_of(mutant, seed):
    """Returns a random number that the seed and the change determine, whatever else is changed."""
    return hashlib.sha256(repr((seed, *key_of(mutant))).encode()).digest()


def survivors(report):
    """Returns the keys of what survived according to the text of a report."""
    return set(re.findall(r"survived: (\S+):\d+ \S+\n  - (.*)\n  \+ (.*)\n", report))


def equivalents(candidates):
    """Returns the keys of the listed changes. Ends the program if one of them is not possible."""
    listed = set(re.findall(r"^(\S+): .*\n  - (.*)\n  \+ (.*)\n", EQUIVALENT.read_text(), re.M))
    gone = listed - {key_of(mutant) for mutant in candidates}
    if gone:
        sys.exit(f"{EQUIVALENT.name} lists changes of code that is gone: {sorted(gone)}")
    return listed


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=100, help="number of changes to try")
    parser.add_argument("--seed", type=int, default=1, help="seed of the random choice")
    parser.add_argument("--room", action="append", help="change only this room (may be repeated)")
    parser.add_argument("--again", type=pathlib.Path, metavar="FILE",
                        help="try what survived in an earlier run")
    parser.add_argument("--least", type=float, default=0, metavar="PERCENT",
                        help="fail if the tests notice less")
    options = parser.parse_args()

    copies = [Copy(number) for number in range(os.cpu_count())]
    known = equivalents(copies[0].mutants(copies[0].rooms()))
    for copy in copies:
        copy.run("cmake", "--build", copy.build, "--target", *copy.all_programs())
        copy.learn()
    free = queue.SimpleQueue()
    for copy in copies:
        free.put(copy)

    def outcome_of(mutant):
        if key_of(mutant) in known:
            return "no effect"
        copy = free.get()
        try:
            return copy.outcome(mutant)
        finally:
            free.put(copy)

    candidates = list(copies[0].mutants(options.room or copies[0].rooms()))
    if options.again:
        wanted = survivors(options.again.read_text())
        chosen = [mutant for mutant in candidates if key_of(mutant) in wanted]
    else:
        chosen = sorted(candidates, key=lambda mutant: rank_of(mutant, options.seed))[:options.count]
    tally, rooms = collections.Counter(), collections.defaultdict(collections.Counter)
    with concurrent.futures.ThreadPoolExecutor(len(copies)) as pool:
        for number, (mutant, outcome) in enumerate(zip(chosen, pool.map(outcome_of, chosen)), 1):
            tally[outcome] += 1
            rooms[mutant.file.parts[0]][outcome] += 1
            place = f"{mutant.file}:{mutant.line + 1}"
            print(f"{number}/{len(chosen)} {outcome}: {place} {mutant.kind}", flush=True)
            if outcome == "survived":
                print(f"  - {mutant.before.strip()}\n  + {mutant.after.strip()}", flush=True)
    for room, outcomes in sorted(rooms.items()):
        print(f"{room:<15} {outcomes['noticed']:4} noticed {outcomes['survived']:4} survived")
    tried = tally["noticed"] + tally["survived"]
    share = 100 * tally["noticed"] / max(tried, 1)
    print(f"{len(candidates)} possible changes, {tried} tried: {tally['noticed']} noticed, "
          f"{tally['survived']} survived ({share:.1f} % noticed); "
          f"{tally['does not compile']} did not compile, {tally['no effect']} had no effect")
    return share < options.least


if __name__ == "__main__":
    sys.exit(main())
