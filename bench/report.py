"""What the bench found, as rows, and the rows as results.csv and RESULTS.md."""
import csv
import datetime
import os
import pathlib
import platform
import re
import shutil
import subprocess

import workloads
from workloads import COPY, FLOOR, OURS, RIVAL

HERE = pathlib.Path(__file__).resolve().parent
COLUMNS = ["workload", "contestant", "role", "output", "messages", "process_ns", "inside_ns", "messages_per_s", "mb_per_s",
           "peak_kib", "ratio", "goal", "reached"]
PACKAGES = ["mawk", "gnucobol3", "libxslt1.1", "libxml2", "openjdk-17-jdk-headless", "libsaxonhe-java",
            "libpugixml1v5", "miller", "jq", "rapidjson-dev", "libsimdjson-dev"]


def output_of(*command):
    try:
        return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                              check=False).stdout.strip()
    except OSError:
        return ""


def cached(build, name):
    found = re.search(rf"^{name}:\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.MULTILINE)
    return found.group(1) if found else ""


def versions():
    found = output_of("dpkg-query", "-W", "-f", "${db:Status-Status} ${Package} ${Version}\n", *PACKAGES)
    lines = [line.split()[1:] for line in found.splitlines() if line.startswith("installed ")]
    lines += [[name, output_of(name, "--version").split()[-1:][0]] for name in ("python3", "node") if shutil.which(name)]
    return ", ".join(" ".join(line) for line in lines)


def build_facts(build):
    """What was measured, and on what."""
    compiler = output_of(cached(build, "CMAKE_CXX_COMPILER"), "--version").splitlines() or ["unknown"]
    build_type = cached(build, "CMAKE_BUILD_TYPE")
    processor = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    return {
        "commit": output_of("git", "-C", str(HERE), "describe", "--always", "--dirty", "--abbrev=12") or "unknown",
        "compiler": f"{compiler[0]}, {build_type} {cached(build, f'CMAKE_CXX_FLAGS_{build_type.upper()}')}",
        "machine": f"{processor.group(1) if processor else platform.machine()}, {os.cpu_count()} cores, "
                   f"{platform.system()} {platform.release()}",
        "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
    }


def facts(build, messages, rounds, core):
    return build_facts(build) | {
        "messages": messages,
        "rounds": rounds,
        "core": core,
        "load at start": f"{os.getloadavg()[0]:.2f}",
        "contestants": versions(),
    }


def goal_text(contestant):
    if contestant.goal is None:
        return ""
    return f"{contestant.goal:g} x faster" if contestant.role == RIVAL else f"at most {contestant.goal:g} x"


def is_reached(contestant, ratio):
    """ratio: the contestant's time by ours."""
    if contestant.goal is None or ratio is None:
        return None
    return ratio >= contestant.goal if contestant.role == RIVAL else ratio >= 1 / contestant.goal


def conversion_of(entry, ours, messages):
    """Nanoseconds a message without reading and writing. A program that does not say them takes for reading and writing
    what ours takes, which is more than it needs: its conversion is taken for shorter than it is, not for longer."""
    if entry.inside(messages) is not None:
        return entry.inside(messages)
    return max(0, entry.process(messages) - ours.outside(messages))


def ratio_of(entry, ours, messages):
    if not ours.inside(messages) or not entry.full:
        return None
    return conversion_of(entry, ours, messages) / ours.inside(messages)


def row(workload, entry, ours, messages, size):
    contestant = entry.contestant
    process = entry.process(messages)
    is_compared = entry.is_right() and ours.is_right() and contestant.role in (RIVAL, FLOOR)
    ratio = ratio_of(entry, ours, messages) if is_compared else None
    return {"workload": workload.name, "contestant": contestant.name, "role": contestant.role, "output": entry.status,
            "messages": messages, "process_ns": process, "inside_ns": entry.inside(messages),
            "messages_per_s": 1e9 / process if process else None,
            "mb_per_s": size / messages * 1e3 / process if process else None, "peak_kib": entry.peak(), "ratio": ratio,
            "goal": goal_text(contestant), "reached": is_reached(contestant, ratio)}


def rows(workload, entries, messages, size):
    ours = next(entry for entry in entries if entry.contestant.role == OURS)
    return [row(workload, entry, ours, messages, size) for entry in entries]


# What a start is held against: how many times its time the command may take; None: it only shows what libraries cost.
START_FLOORS = {"empty process": 2, "empty process with libxml2": None}


def start_rows(times):
    ours = times["cvt2"][0]
    found = []
    for name, (process, peak) in times.items():
        contestant = workloads.Contestant(name, FLOOR if name in START_FLOORS else OURS, "", "", START_FLOORS.get(name))
        ratio = process / ours if contestant.role == FLOOR else None
        found.append(dict.fromkeys(COLUMNS) | {
            "workload": "start", "contestant": name, "role": contestant.role, "output": "not compared",
            "messages": 1, "process_ns": process, "messages_per_s": 1e9 / process, "peak_kib": peak,
            "ratio": ratio, "goal": goal_text(contestant), "reached": is_reached(contestant, ratio)})
    return found


def whole(number):
    return "" if number is None else f"{number:,.0f}"


def said_ratio(row):
    """How the ratio is said: of a rival how many times faster ours is, of a floor how many times its time ours takes."""
    if row["ratio"] is None:
        return ""
    if row["role"] == FLOOR:
        return f"{1 / row['ratio']:.2f} x"
    return f"{row['ratio']:.1f} x faster"


def cells(row):
    return [row["contestant"], whole(row["process_ns"]), whole(row["inside_ns"]), whole(row["messages_per_s"]),
            "" if row["mb_per_s"] is None else f"{row['mb_per_s']:.1f}",
            "" if row["peak_kib"] is None else f"{row['peak_kib'] / 1024:.1f}", said_ratio(row), row["goal"],
            said_reached(row), row["output"]]


HEAD = ["contestant", "ns a message, process", "inside", "messages/s", "MB/s", "peak MiB", "ours", "goal", "reached",
        "output"]


def table(rows):
    lines = ["| " + " | ".join(HEAD) + " |", "|---|" + "---:|" * 5 + "---|" * 4]
    return lines + ["| " + " | ".join(cells(row)) + " |" for row in rows]


def show(rows, name):
    for row in rows:
        if row["workload"] == name:
            print("  ".join(f"{cell:>14}" if i else f"{cell:<18}" for i, cell in enumerate(cells(row))), flush=True)


def said_reached(row):
    return {None: "", True: "yes", False: "**no**"}[row["reached"]]


def goals(rows):
    """All goals in one table."""
    wanted = [row for row in rows if row["goal"]]
    reached = sum(row["reached"] is True for row in wanted)
    unknown = sum(row["reached"] is None for row in wanted)
    lines = [f"{reached} of {len(wanted)} goals are reached, {unknown} could not be measured.", "",
             "| workload | beside | the library | goal | reached |", "|---|---|---|---|---|"]
    for row in wanted:
        said = [row["workload"], row["contestant"], said_ratio(row) or row["output"], row["goal"], said_reached(row)]
        lines.append("| " + " | ".join(said) + " |")
    return lines


def markdown(rows, facts):
    lines = ["# Results of the bench", "",
             "Written by `./run bench`, never by hand. [README.md](README.md) says what is measured and how to read it,",
             "[NOTES.md](NOTES.md) what was tried, kept and dropped, and [why](NOTES.md#goals-that-are-not-reached) goals are not",
             "reached, [PROFILE.md](PROFILE.md) where the instructions go.", ""]
    lines += ["| | |", "|---|---|"] + [f"| {name} | {value} |" for name, value in facts.items()] + ["", *goals(rows), ""]
    titles = {workload.name: workload.title for workload in workloads.WORKLOADS}
    titles["start"] = "one message a start of the command, and programs that do nothing"
    for name, title in titles.items():
        of_workload = [row for row in rows if row["workload"] == name]
        if of_workload:
            lines += [f"## {name}: {title}", "", *table(of_workload), ""]
    lines += ["## Missing", ""] + [f"- {name}: {why}." for name, why in workloads.MISSING.items()]
    lines += [f"- {name}: not run." for name in titles if not any(row["workload"] == name for row in rows)]
    return "\n".join(lines) + "\n"


def plain(value):
    """A cell of results.csv."""
    if isinstance(value, bool):
        return "yes" if value else "no"
    return round(value, 4) if isinstance(value, float) else value


def write(folder, rows, facts):
    folder.mkdir(parents=True, exist_ok=True)
    of_run = {name: facts[name] for name in ("commit", "compiler", "machine", "date")}
    with open(folder / "results.csv", "w", newline="", encoding="utf-8") as file:
        writer = csv.DictWriter(file, COLUMNS + list(of_run), lineterminator="\n")
        writer.writeheader()
        for row in rows:
            writer.writerow({name: plain(value) for name, value in (row | of_run).items()})
    (folder / "RESULTS.md").write_text(markdown(rows, facts), encoding="utf-8")
    print(f"written: {folder / 'results.csv'}, {folder / 'RESULTS.md'}")
