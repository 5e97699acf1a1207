"""check.py PUBLISHED FOUND X937: whether the JSON documents are equal as trees, and their images are the bytes of the
X9.37 file; exit status 1 when they are not."""

import base64
import json
import struct
import sys


def once(pairs):
    members = dict(pairs)
    assert len(members) == len(pairs), "a member twice"
    return members


def read(name):
    with open(name, encoding="utf-8") as file:
        return json.load(file, object_pairs_hook=once)


def images(name):
    """What stands behind the 117 bytes of text in each record 52."""
    with open(name, "rb") as file:
        data = file.read()
    at = 0
    while at < len(data):
        (length,) = struct.unpack(">I", data[at : at + 4])
        record = data[at + 4 : at + 4 + length]
        if record[:2] in (b"52", "52".encode("cp037")):
            yield record[117:]
        at += 4 + length


published, found, x937 = sys.argv[1:]
document = read(found)
if read(published) != document:
    sys.exit(f"{found} is not {published}")
checks = [c for letter in document["cashLetters"] for bundle in letter["bundles"] for c in bundle["checks"]]
encoded = [view["imageData"] for check in checks for view in check["imageViewData"]]
if [base64.b64decode(image) for image in encoded] != list(images(x937)):
    sys.exit(f"images of {found} are not those of {x937}")
