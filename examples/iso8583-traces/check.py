"""check.py TRACES: each message of the traces, through cvt2, has the published fields and comes back byte for byte."""

import html
import json
import os
import re
import subprocess
import sys

here = os.path.dirname(os.path.abspath(__file__))


def cvt2(*arguments, stdin):
    return subprocess.run(["cvt2", *arguments], input=stdin, stdout=subprocess.PIPE, check=True).stdout


def messages(text):
    """(the fields as the trace shows them, the bytes that were sent), in the order of the file."""
    for trace, dump in re.findall(r"<isomsg(.*?)<!--\s*\n((?:[0-9a-f]{4}  [^\n]*\n)+)-->", text, re.S):
        header = bytes.fromhex(re.search(r"<header>(.*?)</header>", trace)[1])
        body = "".join(line[6:54] for line in dump.split("\n"))
        yield trace, header + bytes.fromhex(body)


def published(trace):
    """The fields by the names of the definition: F7, F43_1, T9F02."""
    fields = {}
    tag = r'<([0-9A-F]{2,6})><field id="\d+" value="([^"]*)".*?</\1>'
    for name, value in re.findall(tag, trace):
        fields[f"T{name}"] = value
    group = ""
    plain = r'<isomsg id="(\d+)">|<field id="(\d+)" value="([^"]*)"|</isomsg>'
    for opened, number, value in re.findall(plain, re.sub(tag, "", trace)):
        if number:
            fields[f"F{group}_{number}" if group else f"F{number}"] = value
        else:
            group = opened
    return fields


def flat(members):
    for name, value in members.items():
        if isinstance(value, dict):
            yield from flat(value)
        else:
            yield name, value


def same(shown, found):
    """The traces show texts with or without their pads, and some digits without zeros in front."""
    shown = shown.strip()
    return shown == found or (shown.isdigit() and found.isdigit() and int(shown) == int(found))


count = 0
with open(sys.argv[1], encoding="utf-8") as file:
    text = html.unescape(html.unescape(file.read())).replace("\r", "")
for trace, sent in messages(text):
    line = cvt2("parse", "-c", here, "-m", "Trace", "-f", "iso", "--json", stdin=sent)
    found = dict(flat(json.loads(line)["fields"]))
    expected = published(trace)
    names = set(found) - {"Header", "TagOrder"}
    assert set(expected) == names, f"fields {sorted(set(expected) ^ names)}"
    for name, shown in expected.items():
        assert same(shown, found[name]), f"{name}: the trace shows {shown!r}, found {found[name]!r}"
    written = cvt2("generate", "-c", here, "-t", "iso", stdin=line)
    assert written in (sent, sent + b"\n"), "not the bytes that were sent"
    print(f"{expected['F0']} of {len(sent)} bytes: {len(expected)} fields as published, the same bytes back")
    count += 1
assert count == 4
