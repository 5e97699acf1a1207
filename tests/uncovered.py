#!/usr/bin/env python3
"""Lists what coverage data leave open, a line each: file:line, directions taken of those there are, the source."""
import json
import sys

for file in json.load(sys.stdin)["files"]:
    with open(file["file"], encoding="utf-8") as source:
        text = source.read().split("\n")
    for line in file["lines"]:
        if line.get("gcovr/noncode"):
            continue
        taken = sum(1 for branch in line["branches"] if branch["count"])
        if line["count"] and taken == len(line["branches"]):
            continue
        number = line["line_number"]
        print(f'{file["file"]}:{number}: {taken}/{len(line["branches"])}: {text[number - 1].strip()}')
