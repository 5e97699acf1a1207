#!/usr/bin/env python3
"""Whether two outputs say the same; exit status 1 and the first difference when not.

  compare.py bytes|xml|json EXPECTED FOUND

xml: as bytes, after taking out the line feed that some programs write behind the XML declaration.
json: a value a line, compared as values: white space does not count, and a number is its value, not its digits.
"""
import decimal
import json
import sys

DECLARATION = b'<?xml version="1.0" encoding="UTF-8"?>'


def chunks(name):
    with open(name, "rb") as file:
        yield from enumerate(iter(lambda: file.read(1 << 20), b""), 1)


def xml(name):
    """The lines; a declaration alone belongs to the next one."""
    with open(name, "rb") as file:
        number = 0
        front = b""
        for line in file:
            if line == DECLARATION + b"\n":
                front = DECLARATION
                continue
            number += 1
            yield number, front + line
            front = b""
        if front:
            yield number + 1, front


def values(name):
    with open(name, encoding="utf-8") as file:
        for number, line in enumerate(file, 1):
            yield number, json.loads(line, parse_float=decimal.Decimal, parse_int=decimal.Decimal,
                                     object_pairs_hook=members)


def members(pairs):
    found = dict(pairs)
    if len(found) != len(pairs):
        raise ValueError("a member twice")
    return found


READERS = {"bytes": (chunks, "mebibyte"), "xml": (xml, "line"), "json": (values, "line")}


def difference(kind, expected, found):
    read, unit = READERS[kind]
    other = read(found)
    for number, value in read(expected):
        try:
            if next(other, None) != (number, value):
                return f"{unit} {number} differs"
        except ValueError as error:
            return f"{unit} {number} cannot be read: {error}"
    return None if next(other, None) is None else "there is more than expected"


if __name__ == "__main__":
    sys.exit(difference(*sys.argv[1:4]))
