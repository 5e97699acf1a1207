#!/usr/bin/env python3
"""Where the instructions of a message go, the library's and those of the programs beside it, by callgrind.

  profile.py BUILD [WORKLOAD...] [--messages N] [--results FOLDER]   writes PROFILE.md; all workloads without

Each program runs over files of N and of twice as many messages, 200 and 400; what the second one adds, by N, is a
message, without the start. Starts differ by some ten thousand instructions: the more messages, the less that shows. Programs that make their machine code while they run cannot be counted. README.md has the rest.
"""
import argparse
import collections
import dataclasses
import os
import pathlib
import re
import resource
import shlex
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.dont_write_bytecode = True
import data  # noqa: E402
import report  # noqa: E402
import workloads  # noqa: E402
from workloads import COPY, OURS  # noqa: E402

MESSAGES = 200
SHOWN = 10
COMPILING = {"node", "java", "mlr"}
STAGES = [("parse", "cvtInitMessasge"), ("convert", "pubConvert"), ("generate", "pubGenerate"), ("free", "cvtFreeMessage")]


class Failed(Exception):
    pass


@dataclasses.dataclass
class Counts:
    """Instructions: by function, by function with all that it calls, by library."""
    own: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    whole: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    library: collections.Counter = dataclasses.field(default_factory=collections.Counter)

    def total(self):
        return sum(self.own.values())

    def added_by(self, more, messages):
        """What a message takes, of two runs."""
        def less(many, few):
            return collections.Counter({name: (many[name] - few[name]) / messages for name in many})
        return Counts(less(more.own, self.own), less(more.whole, self.whole), less(more.library, self.library))


def read_counts(file):
    """Of callgrind's file, in which a name stands once and then its number."""
    counts = Counts()
    names = {}
    library = function = ""
    of_call = False
    for line in file.read_text(errors="replace").splitlines():
        found = re.match(r"(c?)(ob|fn)=(\(\d+\))(?: (.*))?$", line)
        if found:
            is_callee, kind, number, name = found.groups()
            key = kind + number
            if name is not None:
                names[key] = name
            if not is_callee and kind == "ob":
                library = pathlib.Path(names[key]).name
            elif not is_callee:
                function = short(names[key])
        elif line.startswith("calls="):
            of_call = True
        elif re.match(r"[+\-*\d]\S* \d+$", line):
            cost = int(line.split()[1])
            counts.whole[function] += cost
            if not of_call:
                counts.own[function, library] += cost
                counts.library[library] += cost
            of_call = False
    return counts


def short(name):
    """Without arguments, template arguments and name spaces that say nothing; a recursion is one function."""
    name = re.sub(r"'\d+$", "", name)
    name = name.replace("(anonymous namespace)::", "").replace("cvt::", "")
    while True:
        shorter = re.sub(r"<[^<>]*>", "", re.sub(r"\([^()]*\)( const)?", "", name))
        if shorter == name:
            break
        name = shorter
    return name.split(" ")[-1] if "operator" not in name else name


class Profile:
    def __init__(self, build, scratch, messages):
        self.few, self.many = messages, 2 * messages
        self.names = {"bin": build / "bin", "bench": HERE, "work": build / "contestants"}
        self.scratch = pathlib.Path(scratch)

    def words(self, command, **names):
        return [word.format(**self.names, **names) for word in shlex.split(command)]

    def count(self, words):
        """Of a command, which may begin with `env NAME=VALUE`."""
        environment = dict(os.environ)
        if words[0] == "env":
            name, value = words[1].split("=", 1)
            environment[name] = value
            words = words[2:]
        counts = self.scratch / "counts"
        done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={counts}", *words],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=environment, check=False)
        if done.returncode != 0:
            raise Failed("does not run under valgrind")
        return read_counts(counts)

    def contestant(self, workload, contestant):
        """Its counts of a message."""
        if COMPILING.intersection(contestant.command.split()[:3]):
            raise Failed("makes its code while it runs")
        needs = contestant.needs.format(**self.names)
        if shutil.which(needs) is None and not pathlib.Path(needs).exists():
            raise Failed(f"{pathlib.Path(needs).name} is missing")
        few, many = (self.count(self.words(contestant.command, input=self.scratch / str(n) / workload.input,
                                           output=self.scratch / "output")) for n in (self.few, self.many))
        messages = workloads.messages(workload, self.many) - workloads.messages(workload, self.few)
        added = few.added_by(many, messages)
        if added.total() < 1:
            raise Failed("does its work in another process")
        return added

    def start(self, words):
        """Counts of a process, its page faults, and the libraries that it loads."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_minflt
        subprocess.run(words, check=True, stdout=subprocess.DEVNULL)
        faults = resource.getrusage(resource.RUSAGE_CHILDREN).ru_minflt - before
        counts = self.count(words)
        return counts, faults, sum(1 for library in counts.library if ".so" in library)


def table(head, rows):
    alignment = ["---"] + ["---:"] * (len(head) - 1)
    return ["", *("| " + " | ".join(map(str, row)) + " |" for row in [head, alignment, *rows]), ""]


def number(value):
    return f"{value:,.0f}"


def workload_lines(profile, workload):
    print(f"{workload.name}: {workload.title}", flush=True)
    rows = []
    ours = None
    for contestant in (c for c in workload.contestants if c.role != COPY):
        try:
            counts = profile.contestant(workload, contestant)
            ours = counts if contestant.role == OURS else ours
            rows.append([contestant.name, number(counts.total())])
        except Failed as why:
            rows.append([contestant.name, f"not counted: {why}"])
    if ours is None:
        raise Failed(f"{workload.name}: the library's program does not run")
    stages = [[name, number(ours.whole[function])] for name, function in STAGES if ours.whole[function] > 1]
    most = [[f"`{function}`", library, number(n), f"{n / ours.total():.0%}"]
            for (function, library), n in ours.own.most_common(SHOWN)]
    return [f"## {workload.name}: {workload.title}", *table(["program", "instructions a message"], rows),
            *table(["stage of the library", "instructions"], stages)[1:],
            *table(["function of the library", "in", "own instructions", "share"], most)[1:]]


def start_lines(profile):
    print("start", flush=True)
    convert = "{bin}/cvt2 convert -c {bench}/start -m OrderRecord -f in -t xml -o {output} {input}"
    words = {"empty process": profile.words("{bin}/bench_empty"),
             "empty process with libxml2": profile.words("{bin}/bench_empty_libxml2"),
             "cvt2": profile.words(convert, input=profile.scratch / "1/w1.dat", output=profile.scratch / "output")}
    rows = []
    for name, command in words.items():
        counts, faults, libraries = profile.start(command)
        loader = sum(n for library, n in counts.library.items() if library.startswith("ld-"))
        rows.append([name, libraries, number(faults), number(counts.total()), number(loader)])
    most = [[library, number(n), f"{n / counts.total():.0%}"] for library, n in counts.library.most_common(SHOWN)]
    return ["## start: one message a start of the command",
            *table(["process", "shared libraries", "page faults", "instructions", "of them the loader's"], rows),
            *table(["instructions of cvt2 in", "", "share"], most)[1:]]


def options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=lambda name: pathlib.Path(name).resolve())
    parser.add_argument("workloads", nargs="*", metavar="WORKLOAD", help="its name or the beginning; all without")
    parser.add_argument("--messages", type=int, default=MESSAGES)
    parser.add_argument("--results", type=pathlib.Path, help="where PROFILE.md is written")
    return parser.parse_args()


def main():
    arguments = options()
    names = arguments.workloads
    facts = report.build_facts(arguments.build)
    lines = ["# Where the instructions go", "",
             "Written by `./run bench --profile`, never by hand: callgrind's counts. [README.md](README.md#the-profile) says "
             "how they are taken, [NOTES.md](NOTES.md) what follows from them.",
             *table(["", ""], facts.items())]
    with tempfile.TemporaryDirectory(prefix="cvt2-profile-") as scratch:
        profile = Profile(arguments.build, scratch, arguments.messages)
        for messages in (1, profile.few, profile.many):
            data.make(profile.scratch / str(messages), messages)
        try:
            for workload in workloads.WORKLOADS:
                if not names or any(workload.name.startswith(name) for name in names):
                    lines += workload_lines(profile, workload)
            if not names or "start" in names:
                lines += start_lines(profile)
        except Failed as why:
            print(f"profile.py: {why}", file=sys.stderr)
            return 1
    file = (arguments.results or (arguments.build if names else HERE)) / "PROFILE.md"
    file.write_text("\n".join(lines).rstrip() + "\n", encoding="utf-8")
    print(f"written: {file}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
