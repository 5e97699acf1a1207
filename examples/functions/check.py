#!/usr/bin/env python3
"""check.py SALES STATEMENT: works every value of the statement out anew, from the records and the tables."""
import datetime
import decimal
import hashlib
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree
import zoneinfo

here = pathlib.Path(__file__).parent


def table(name):
    lines = (here / "Table" / (name + ".txt")).read_text().splitlines()
    return dict(line.split("\t", 1) for line in lines if not line.startswith("#"))


def is_valid(card):
    digits = [int(digit) for digit in reversed(card)]
    return sum(digits[::2] + [sum(divmod(2 * digit, 10)) for digit in digits[1::2]]) % 10 == 0


def expected(record):
    kind, card, when, amount = record[1:3], record[3:22].rstrip(), record[22:34], record[34:44]
    country, place, note = record[44:46], record[46:66], record[66:96].rstrip()
    time = datetime.datetime.strptime(when, "%y%m%d%H%M%S").replace(tzinfo=zoneinfo.ZoneInfo("Europe/Berlin"))
    money = decimal.Decimal(amount).scaleb(-2)
    invoice = re.search("/INV/([0-9A-Z-]+)", note)
    return {
        "key": hashlib.sha256((card + when + amount).encode()).hexdigest()[:16],
        "kind": table("Type").get(kind, "other"),
        "card": card[:6] + "*" * (len(card) - 10) + card[-4:],
        "check": "valid" if is_valid(card) else "invalid",
        "time": time.astimezone(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ"),
        "amount": ("-" if kind == "06" else "") + str(money),
        "fee": str((money * decimal.Decimal("0.0125")).quantize(decimal.Decimal("0.01"), decimal.ROUND_HALF_EVEN)),
        "place": " ".join(place.upper().split()),
        "country": table("Country")[country.upper()],
        "invoice": invoice.group(1) if invoice else "none",
        "receipt": note.rsplit("#")[-1].rjust(8, "0"),
    }


records = pathlib.Path(sys.argv[1]).read_text().splitlines()
statement = ElementTree.parse(sys.argv[2]).getroot()
found = [sale.attrib | {field.tag: field.text for field in sale} for sale in statement]
wanted = [expected(record) for record in records[1:]]
if found != wanted:
    sys.exit(f"expected {wanted}\nfound {found}")
print(f"{len(found)} sales, {sum(map(len, found))} values")
