"""w3_json.py INPUT OUTPUT: CSV as one JSON object a row."""
import csv
import json
import sys

with open(sys.argv[1], encoding="utf-8", newline="") as source, open(sys.argv[2], "w", encoding="utf-8") as target:
    for row in csv.DictReader(source, strict=True):
        target.write(json.dumps(row, separators=(",", ":")) + "\n")
