"""check.py json|xml PUBLISHED FOUND: whether two documents are equal as trees; exit status 1 when they are not."""

import json
import sys
import xml.etree.ElementTree as ElementTree


def tree(element):
    """Name, attributes, text and children, without the white space between elements."""
    text = element.text or ""
    children = [tree(child) for child in element]
    return (element.tag, element.attrib, text.strip() if children else text, children)


def once(pairs):
    members = dict(pairs)
    assert len(members) == len(pairs), "a member twice"
    return members


def read(kind, name):
    with open(name, encoding="utf-8") as file:
        if kind == "json":
            return json.load(file, object_pairs_hook=once)
        return tree(ElementTree.parse(file).getroot())


kind, published, found = sys.argv[1:]
if read(kind, published) != read(kind, found):
    sys.exit(f"{found} is not {published}")
