#!/usr/bin/env python3
"""Guards the speed of six workloads: counts the instructions of a message, which other work on the machine does not
change, and compares them with the committed ones.

  guard.py BUILD            exit status 1 when a workload has become slower, 77 when these counts cannot be compared
  guard.py BUILD --accept   takes the counts of this build as the committed ones

BUILD: a folder in which `bench_guard` was built.
"""
import argparse
import concurrent.futures
import os
import pathlib
import platform
import shlex
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
sys.dont_write_bytecode = True
import data  # noqa: E402
import workloads  # noqa: E402

COUNTS = HERE / "counts.csv"
HEAD = "workload,instructions_per_message"
GUARDED = ["w1-xml", "w1-json", "w2-fixed", "w3-json", "w4-json", "w6"]
MESSAGES = 200
MOST_GROWTH = 0.03
SKIPPED = 77

# What is counted: each of these calls, from its beginning to its end. None is made within another.
COUNTED = ["cvtInitMessasge", "cvtGenerateMessasge", "cvtFreeMessage"]
COUNTED_AGAIN = ["cvtInitMessasge", "fucGenerate", "cvtFreeMessage"]  # of a message that is not converted


class Skipped(Exception):
    pass


class Failed(Exception):
    pass


def taken_with(build):
    """What the counts depend on, besides the code."""
    flags = pathlib.Path("/proc/cpuinfo").read_text(encoding="ascii", errors="replace")
    vectors = "avx2" if " avx2 " in flags else "without avx2"
    return "; ".join([" ".join((build / "bench/guard/built").read_text(encoding="utf-8").split()),
                      f"{platform.machine()} {vectors}", " ".join(platform.libc_ver())])


def committed():
    """The line that says what they were taken with, and the counts by workload."""
    if not COUNTS.exists():
        return "", {}
    taken, head, *rows = COUNTS.read_text(encoding="utf-8").splitlines()
    if head != HEAD:
        raise Failed(f"{COUNTS}: expected the heading {HEAD}, found {head}")
    return taken.removeprefix("# "), {name: int(count) for name, count in (row.split(",") for row in rows)}


def check_valgrind():
    if shutil.which("valgrind") is None:
        raise Skipped("valgrind is not installed")
    if subprocess.run(["valgrind", "--quiet", "/bin/true"], capture_output=True, check=False).returncode != 0:
        raise Skipped("valgrind does not start; the Debian package libc6-dbg may be missing")


def check_output(workload, folder, output):
    """A wrong answer is no speed. What only a contestant can tell is left to the whole bench."""
    expected = folder / workload.expected
    if workload.compare == "bytes" and expected.name in data.FILES and output.read_bytes() != expected.read_bytes():
        raise Failed(f"{workload.name}: the output is not {expected.name}")


def count(workload, build, folder):
    """Instructions of a message."""
    ours = next(c for c in workload.contestants if c.role == workloads.OURS)
    output = folder / f"{workload.name}.out"
    counts = folder / f"{workload.name}.counts"
    words = [word.format(bin=build / "bin", bench=HERE.parent, input=folder / workload.input, output=output)
             for word in shlex.split(ours.command)]
    pipeline, target = words[5:7]
    calls = COUNTED_AGAIN if pipeline == target else COUNTED
    done = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={counts}",
                           *[f"--toggle-collect={name}" for name in calls], *words],
                          capture_output=True, text=True, check=False, env={**os.environ, "VEL_LOG_LEVEL": "1"})
    if done.returncode != 0:
        raise Failed(f"{workload.name}: {done.stderr}")
    check_output(workload, folder, output)
    total = next(int(line.split()[1]) for line in counts.read_text().splitlines() if line.startswith("summary:"))
    if total < MESSAGES * 500:
        raise Failed(f"{workload.name}: only {total} instructions were counted")
    return round(total / MESSAGES)


def count_all(build):
    chosen = [w for w in workloads.WORKLOADS if w.name in GUARDED]
    if len(chosen) != len(GUARDED):
        raise Failed("workloads.py lacks some of " + ", ".join(GUARDED))
    with tempfile.TemporaryDirectory() as name, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        folder = pathlib.Path(name)
        subprocess.run([sys.executable, HERE.parent / "data.py", folder, str(MESSAGES)], check=True)
        return dict(zip([w.name for w in chosen], pool.map(lambda w: count(w, build, folder), chosen)))


def accept(taken, counts):
    COUNTS.write_text(f"# {taken}\n{HEAD}\n" + "".join(f"{name},{n}\n" for name, n in counts.items()), encoding="utf-8")
    print(f"accepted: {COUNTS}")


def compare(before, now):
    """How many workloads have become slower."""
    slower = 0
    for name, count_now in now.items():
        if name not in before:
            raise Failed(f"{COUNTS} lacks {name}: accept the counts anew")
        change = count_now / before[name] - 1
        print(f"RESULT guard {name}: {count_now} instructions a message, {change:+.1%}")
        if change > MOST_GROWTH:
            slower += 1
            print(f"{name} has become slower: {before[name]} instructions a message before, {count_now} now. Where this "
                  f"is right: bench/guard/guard.py BUILD --accept, and commit {COUNTS.name}", file=sys.stderr)
    return slower


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=lambda name: pathlib.Path(name).resolve())
    parser.add_argument("--accept", action="store_true")
    options = parser.parse_args()
    try:
        check_valgrind()
        taken = taken_with(options.build)
        taken_before, before = committed()
        if not options.accept and taken != taken_before:
            raise Skipped(f"the counts were taken with [{taken_before}], this is [{taken}]")
        now = count_all(options.build)
        if options.accept:
            return accept(taken, now)
        return 1 if compare(before, now) else 0
    except Skipped as why:
        print(f"skipped: {why}")
        return SKIPPED
    except Failed as why:
        print(why, file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
