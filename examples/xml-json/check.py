#!/usr/bin/env python3
"""Compares the demo's files, with the parsers of Python. Reads what to compare from its standard input, a comparison
a line, its parts divided by tabs. Ends with 1 and a line for each that does not hold.

  json EXPECTED FOUND      the same tree, members in any order, numbers digit by digit
  xml EXPECTED FOUND       the same document but for white space between elements and prefixes
  values XML JSON          every text and attribute of the document stands in the JSON, under the same name
  amounts JSON VALUE...    these are the numbers of the JSON, in any order
"""
import collections
import json
import sys
import xml.etree.ElementTree as ET


class Differs(Exception):
    """What does not hold."""


class Number(str):
    """A number as it is written."""


def load(file):
    def unique(pairs):
        members = dict(pairs)
        assert len(members) == len(pairs), f"{file}: a name stands twice"
        return members

    with open(file, encoding="utf-8") as text:
        return json.load(text, parse_int=Number, parse_float=Number, object_pairs_hook=unique)


def same(expected, found, where="$"):
    if type(expected) is not type(found):
        raise Differs(f"{where}: expected {expected!r}, found {found!r}")
    if isinstance(expected, dict):
        if expected.keys() != found.keys():
            raise Differs(f"{where}: expected members {list(expected)}, found {list(found)}")
        for name in expected:
            same(expected[name], found[name], f"{where}.{name}")
    elif isinstance(expected, list):
        if len(expected) != len(found):
            raise Differs(f"{where}: expected {len(expected)} elements, found {len(found)}")
        for i, (one, other) in enumerate(zip(expected, found)):
            same(one, other, f"{where}[{i}]")
    elif expected != found:
        raise Differs(f"{where}: expected {expected!r}, found {found!r}")


def document(file):
    return ET.canonicalize(from_file=file, strip_text=True, rewrite_prefixes=True)


def xml_values(element):
    name = element.tag.split("}")[-1]
    text = (element.text or "").strip()
    if text:
        yield (name if not element.attrib else "Value", text)
    yield from element.attrib.items()
    for child in element:
        yield from xml_values(child)


def json_values(value, name="$"):
    if isinstance(value, dict):
        for member, inner in value.items():
            # What the publisher of the pairs adds.
            if member not in ("XMLName", "Attrs"):
                yield from json_values(inner, member)
    elif isinstance(value, list):
        for inner in value:
            yield from json_values(inner, name)
    elif value != "":
        yield (name, str(value))


def numbers(value):
    if isinstance(value, Number):
        yield str(value)
    elif isinstance(value, (dict, list)):
        for inner in value.values() if isinstance(value, dict) else value:
            yield from numbers(inner)


def compare(what, first, *rest):
    if what == "json":
        same(load(first), load(rest[0]))
    elif what == "xml":
        if document(first) != document(rest[0]):
            raise Differs(f"{rest[0]} is another document than {first}")
    elif what == "values":
        expected, found = list(xml_values(ET.parse(first).getroot())), list(json_values(load(rest[0])))
        if collections.Counter(expected) != collections.Counter(found):
            raise Differs(f"{rest[0]}: values differ: {set(expected) ^ set(found)}")
    elif what == "amounts":
        if sorted(numbers(load(first))) != sorted(rest):
            raise Differs(f"{first}: expected {sorted(rest)}, found {sorted(numbers(load(first)))}")
    else:
        raise Differs(f"no comparison: {what}")


def main():
    failed = 0
    for line in sys.stdin:
        parts = line.rstrip("\n").split("\t")
        try:
            compare(*parts)
        except (Differs, OSError, ValueError, AssertionError, ET.ParseError) as wrong:
            print(f"FAILED: {' '.join(parts)}: {wrong}", file=sys.stderr)
            failed = 1
    return failed


sys.exit(main())
