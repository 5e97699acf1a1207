#!/usr/bin/env python3
"""Runs the bench: the library and its contestants in turn on one core, their outputs compared. README.md has the rest.

  run.py [WORKLOAD...] [--messages N] [--rounds N] [--core N] [--build FOLDER] [--results FOLDER]
  run.py --check [WORKLOAD...] [--messages N] [--build FOLDER]

--check: whether the library's outputs are those of the data and of the converters written by hand; measures nothing.
"""
import argparse
import dataclasses
import pathlib
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile

import compare
import data
import report
import workloads
from workloads import COPY, FLOOR, OURS

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
NPM_PACKAGE = "iso_8583@2.6.7"
MAX_SECONDS = 900
MAX_MEBIBYTES = 12000
LONG = 20e9  # nanoseconds; what takes longer is measured twice, not in every round
STARTS = 100


class Failed(Exception):
    pass


@dataclasses.dataclass
class Times:
    """CPU nanoseconds and peak KiB of one process; inside: what it says of its conversion alone."""
    process: int
    peak: int
    inside: int | None


class Bench:
    def __init__(self, build, core, scratch, mebibytes=MAX_MEBIBYTES):
        self.core = core
        self.mebibytes = mebibytes
        self.scratch = pathlib.Path(scratch)
        self.work = build / "contestants"
        self.bin = build / "bin"

    def words(self, text, **names):
        return [word.format(bench=HERE, bin=self.bin, work=self.work, **names) for word in shlex.split(text)]

    def run(self, command, stdout):
        """Times of the command, whose standard output goes to that file."""
        with open(stdout, "wb") as output:
            done = subprocess.run([self.bin / "bench_measure", str(self.core), str(MAX_SECONDS), str(self.mebibytes),
                                   *command], stdout=output, stderr=subprocess.PIPE, check=False)
        said = done.stderr.decode(errors="replace").strip().splitlines()
        status, process, peak = map(int, said.pop().split())
        if status != 0:
            said = [line for line in said if line.strip()] or [f"ended with {status}"]
            raise Failed(said[-1][:120])
        return process, peak

    def measure(self, contestant, source, output):
        told = output if contestant.stdout else self.scratch / "told"
        process, peak = self.run(self.words(contestant.command, input=source, output=output), told)
        inside = None
        if not contestant.stdout:
            word, _, number = told.read_text(errors="replace").partition(" ")
            inside = int(number) if word == "conversion_ns" else None
        return Times(process, peak, inside)

    def missing(self, contestant):
        needs = contestant.needs.format(bench=HERE, bin=self.bin, work=self.work)
        return None if shutil.which(needs) or pathlib.Path(needs).exists() else f"{pathlib.Path(needs).name} is missing"


@dataclasses.dataclass
class Entry:
    """A contestant of a workload, and what was measured of it."""
    contestant: workloads.Contestant
    status: str = "same"
    full: list = dataclasses.field(default_factory=list)
    one: list = dataclasses.field(default_factory=list)

    def ended(self):
        return self.status.startswith(("skipped", "failed"))

    def is_right(self):
        return self.status in ("same", "reference")

    def is_long(self):
        return len(self.full) > 1 and self.full[0].process > LONG

    def process(self, messages):
        """CPU nanoseconds a message, without what one message takes: start, configuration, stylesheet."""
        if not self.full or not self.one:
            return None
        start = min(times.process for times in self.one)
        return max(0, min(times.process for times in self.full) - start) / max(1, messages - 1)

    def inside(self, messages):
        known = [times.inside for times in self.full if times.inside is not None]
        return min(known) / messages if known else None

    def outside(self, messages):
        """CPU nanoseconds a message that are not of its conversion: reading and writing."""
        def least(runs):
            return min(times.process - times.inside for times in runs)
        return max(0, least(self.full) - least(self.one)) / max(1, messages - 1)

    def peak(self):
        return max((times.peak for times in self.full), default=None)


class Run:
    """A workload: its contestants round after round, each output compared in the first one."""

    def __init__(self, bench, workload, folder, one=None):
        self.bench = bench
        self.workload = workload
        self.folder = folder
        self.input = folder / workload.input
        self.one = one / workload.input if one else None
        self.entries = [Entry(contestant) for contestant in workload.contestants]

    def output(self, name):
        return self.bench.scratch / f"{self.workload.name}-{name.replace(' ', '-')}"

    def measure(self, entry):
        reason = self.bench.missing(entry.contestant)
        if reason:
            entry.status = "skipped: " + reason
            return
        try:
            entry.full.append(self.bench.measure(entry.contestant, self.input, self.output(entry.contestant.name)))
            if self.one:
                entry.one.append(self.bench.measure(entry.contestant, self.one, self.bench.scratch / "one"))
        except Failed as error:
            entry.status = f"failed: {error}"

    def expected(self):
        """The file that the outputs must equal: of the data, of the contestant that is named, or else of a floor."""
        known = self.folder / self.workload.expected
        if known.exists():
            return known
        done = {entry.contestant.name: entry.contestant.role for entry in self.entries if not entry.ended()}
        floors = [name for name, role in done.items() if role == FLOOR]
        names = [self.workload.expected] if self.workload.expected in done else floors
        return self.output(names[0]) if names else None

    def compare(self, entry):
        if entry.ended():
            return
        is_copy = entry.contestant.role == COPY
        expected = self.input if is_copy else self.expected()
        output = self.output(entry.contestant.name)
        if expected is None or expected == output:
            entry.status = "reference" if expected else "not compared: no other output"
            return
        found = compare.difference("bytes" if is_copy else self.workload.compare, expected, output)
        if found:
            entry.status = "WRONG: " + found

    def all(self, rounds):
        for number in range(rounds):
            for entry in self.entries:
                if not entry.ended() and not (number > 1 and entry.is_long()):
                    self.measure(entry)
            if number == 0:
                for entry in self.entries:
                    self.compare(entry)
        for entry in self.entries:
            self.output(entry.contestant.name).unlink(missing_ok=True)
        return self.entries

    def only(self, *roles):
        self.entries = [entry for entry in self.entries if entry.contestant.role in roles]
        return self


def starts(bench, one):
    """Median CPU of starts of the command for one message, and of programs that do nothing, in turn."""
    output = bench.scratch / "one"
    command = f"{bench.bin}/cvt2 convert -c {{bench}}/start -m OrderRecord -f in -t xml -o {{output}} {{input}}"
    lines = {"cvt2": command, "empty process": "{bin}/bench_empty",
             "empty process with libxml2": "{bin}/bench_empty_libxml2"}
    times = {name: [] for name in lines}
    peaks = dict.fromkeys(lines)
    for _ in range(STARTS):
        for name, line in lines.items():
            process, peaks[name] = bench.run(bench.words(line, input=one / "w1.dat", output=output), bench.scratch / "told")
            times[name].append(process)
    return {name: (statistics.median(times[name]), peaks[name]) for name in lines}


def made_data(folder, count):
    if data.check(folder, count):
        print(f"making data for {count} messages", flush=True)
        data.make(folder, count)
    wrong = data.check(folder, count)
    if wrong:
        sys.exit(f"run.py: not the bench's data: {', '.join(wrong)}")
    return folder


def prepare(work):
    """What contestants need that CMake does not build; one that fails is missing later, and the results say so."""
    sources = HERE / "contestants"
    steps = [["cobc", "-x", "-O2", "-o", work / "w1_fixed", sources / "w1_fixed.cob"],
             ["javac", "-d", work / "java", sources / "Transform.java"]]
    if not (work / "npm/node_modules/iso_8583").exists():
        steps.append(["npm", "install", "--prefix", work / "npm", "--no-audit", "--no-fund", "--silent", NPM_PACKAGE])
    for step in steps:
        if shutil.which(step[0]) is None or subprocess.run(step, check=False).returncode != 0:
            print(f"not prepared: {' '.join(map(str, step))}", flush=True)


def options():
    parser = argparse.ArgumentParser(description="the library and its contestants, side by side")
    parser.add_argument("workloads", nargs="*", metavar="WORKLOAD", help="its name or the beginning; all without")
    parser.add_argument("--messages", type=int, default=data.DEFAULT)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--core", type=int, default=0)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/bench")
    parser.add_argument("--results", type=pathlib.Path, help="where results.csv and RESULTS.md are written")
    parser.add_argument("--check", action="store_true", help="compare the library's outputs, measure nothing")
    arguments = parser.parse_args()
    arguments.build = arguments.build.resolve()
    return arguments


def chosen(names):
    """The workloads of these names, and whether the starts are among them."""
    known = [workload.name for workload in workloads.WORKLOADS] + ["start"]
    for name in names:
        if not any(one.startswith(name) for one in known):
            sys.exit(f"run.py: no workload '{name}'; known: {', '.join(known)}")
    wanted = [workload for workload in workloads.WORKLOADS
              if not names or any(workload.name.startswith(name) for name in names)]
    return wanted, not names or "start" in names


def scratch_folder():
    shared = "/dev/shm" if pathlib.Path("/dev/shm").is_dir() else None
    return tempfile.TemporaryDirectory(prefix="cvt2-bench-", dir=shared)


def check(arguments, wanted):
    """Exit status: 1 when an output is wrong or there is none."""
    inputs = made_data(arguments.build / f"data/{arguments.messages}", arguments.messages)
    code = 0
    with scratch_folder() as scratch:
        bench = Bench(arguments.build, arguments.core, scratch, mebibytes=1 << 40)
        for workload in wanted:
            for entry in Run(bench, workload, inputs).only(OURS, FLOOR).all(1):
                print(f"{workload.name}: {entry.contestant.name}: {entry.status}")
                code |= entry.status.startswith("WRONG") or (entry.ended() and entry.contestant.role == OURS)
    return int(code)


def measure(arguments, wanted, with_starts):
    facts = report.facts(arguments.build, arguments.messages, arguments.rounds, arguments.core)
    facts["contestants"] += f", npm {NPM_PACKAGE}"
    inputs = made_data(arguments.build / f"data/{arguments.messages}", arguments.messages)
    one = made_data(arguments.build / "data/1", 1)
    rows = []
    with scratch_folder() as scratch:
        bench = Bench(arguments.build, arguments.core, scratch)
        bench.work.mkdir(parents=True, exist_ok=True)
        prepare(bench.work)
        for workload in wanted:
            print(f"== {workload.name}: {workload.title}", flush=True)
            entries = Run(bench, workload, inputs, one).all(arguments.rounds)
            rows += report.rows(workload, entries, workloads.messages(workload, arguments.messages),
                                (inputs / workload.input).stat().st_size)
            report.show(rows, workload.name)
        if with_starts:
            print("== start", flush=True)
            rows += report.start_rows(starts(bench, one))
            report.show(rows, "start")
    return rows, facts


def main():
    arguments = options()
    wanted, with_starts = chosen(arguments.workloads)
    if arguments.check:
        return check(arguments, wanted)
    rows, facts = measure(arguments, wanted, with_starts)
    # What is not the whole bench does not replace its results.
    is_whole = not arguments.workloads and arguments.messages == data.DEFAULT
    report.write(arguments.results or (HERE if is_whole else arguments.build), rows, facts)
    return int(any(row["output"].startswith("WRONG") for row in rows))


if __name__ == "__main__":
    sys.exit(main())
