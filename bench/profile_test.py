#!/usr/bin/env python3
"""Whether the profile of one workload says what it should.

  profile_test.py BUILD     exit status 77 without valgrind
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent


def numbers(text, head):
    """Of the table with that head, the first number of each row by its name."""
    rows = text.split(head, 1)[1].split("\n\n", 1)[0].splitlines()
    found = (re.match(r"\| `?([^|`]*)`? \|(?:[^|]*\|)*? ([\d,]+) \|", row) for row in rows)
    return {row[1]: int(row[2].replace(",", "")) for row in found if row}


def main():
    if shutil.which("valgrind") is None or subprocess.run(["valgrind", "--quiet", "/bin/true"], check=False).returncode != 0:
        print("skipped: no valgrind")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([HERE / "profile.py", sys.argv[1], "w6", "--messages", "2000", "--results", folder], check=True)
        text = (pathlib.Path(folder) / "PROFILE.md").read_text(encoding="utf-8")
    print(text)
    programs = numbers(text, "| program |")
    stages = numbers(text, "| stage of the library |")
    functions = numbers(text, "| function of the library |")
    assert 1000 < programs["hand-written C++"] < programs["cvt2"], programs
    assert set(stages) == {"parse", "generate", "free"}, stages
    assert 0.8 * programs["cvt2"] < sum(stages.values()) <= programs["cvt2"], (programs, stages)
    assert any("iso8583" in name for name in functions), functions
    assert sum(functions.values()) < programs["cvt2"], functions
    return 0


if __name__ == "__main__":
    sys.exit(main())
