"""check.py file PUBLISHED FOUND       whether two JSON documents are equal
check.py payee PUBLISHED FOUND      whether every value of a published payee is one that parsing found in it

Exit status 1 when not."""

import collections
import json
import sys


def read(name):
    with open(name, encoding="utf-8") as file:
        return json.load(file)


def texts(value):
    """All values, as texts."""
    if isinstance(value, dict):
        return [text for member in value.values() for text in texts(member)]
    return [str(value)]


kind, published, found = sys.argv[1], read(sys.argv[2]), read(sys.argv[3])
if kind == "file":
    sys.exit(0 if published == found else f"{sys.argv[3]} is not {sys.argv[2]}")
payee = found["fields"]["Persons"][0]["Payees"][0]
# Dates are as in the record here, 20020920 for 2002-09-20T00:00:00Z; blank texts are left out.
wanted = [v[:10].replace("-", "") if v.endswith("T00:00:00Z") else v for v in texts(published) if v]
missing = collections.Counter(wanted) - collections.Counter(texts(payee))
missing.pop("0", None)  # a blank number, which the published JSON shows as 0
if missing:
    sys.exit(f"{sys.argv[3]} lacks {dict(missing)}")
