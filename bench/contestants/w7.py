"""w7.py INPUT OUTPUT FROM TO: lines of three text fields from one character set to another, field by field."""
import sys

WIDTHS = {"UTF-8": (120, 16, 120), "GB18030": (80, 16, 80)}
NAME, SOURCE, TARGET, FROM, TO = sys.argv


def converted(line):
    if len(line) != sum(WIDTHS[FROM]) + 1:
        raise ValueError("wrong length")
    out = []
    at = 0
    for before, after in zip(WIDTHS[FROM], WIDTHS[TO]):
        field = line[at:at + before].decode(FROM).rstrip(" ").encode(TO)
        if len(field) > after:
            raise ValueError("too long")
        out.append(field.ljust(after))
        at += before
    return b"".join(out) + b"\n"


with open(SOURCE, "rb") as source, open(TARGET, "wb") as target:
    for record in source:
        target.write(converted(record))
