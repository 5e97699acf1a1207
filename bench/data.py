#!/usr/bin/env python3
"""The bench's data: the same bytes on every machine, without a clock, a hash order or the language's random numbers.

  data.py FOLDER [N]            writes the files, for N messages (100000)
  data.py --check FOLDER [N]    whether they are there and are the right ones; exit status 1 when not

w1.dat, w2.xml, w3.csv and w4.jsonl hold the same orders. Of w7.utf8 and w7.gb there are three lines for five messages.
"""
import argparse
import hashlib
import json
import pathlib
import struct
import sys

DEFAULT = 100000
FILES = ["w1.dat", "w2.xml", "w3.csv", "w4.jsonl", "w5.fix", "w6.iso", "w6bcd.iso", "w7.utf8", "w7.gb", "w8.ach"]
SUMS = {
    DEFAULT: {
        "w1.dat": "460678e7fcbad7a4c509cc6a1fa08d07",
        "w2.xml": "f4ef8442ff6f8341a17621c18caff8f7",
        "w3.csv": "712af22b44c6e0cff2aeb8c45d4db773",
        "w4.jsonl": "2c9599d63184b1bea41c8cd2024fddae",
        "w5.fix": "b7eb264f913b46b15ae3963cc50f1bc1",
        "w6.iso": "33ac269369061c6201c902e69a8ef3c2",
        "w6bcd.iso": "2c7cff3d0bd4a8cac95e5aecf0984aed",
        "w7.utf8": "aa95bb070133fd2b84ffc9702ce0f1af",
        "w7.gb": "d9385d3353ca88d89f2beaf2405fc8c3",
        "w8.ach": "59662e83fc5b8e68587a6d6f93b736fd",
    },
    200: {
        "w1.dat": "c5b5730c496e8371e331cf3e9f19cbff",
        "w2.xml": "dc552055b12c62506ef3887b7b28bf89",
        "w3.csv": "162eba1d970eecac705e1dd5de1f502c",
        "w4.jsonl": "82c234507933e78bd863bff1ce422fd5",
        "w5.fix": "6b8b8c8d7b4b016b335b4b71b0bb8fc5",
        "w6.iso": "59eb89b01ba354a490248ab12c03e4aa",
        "w6bcd.iso": "698aeaa06ddc75738dabb82cd40d3e5f",
        "w7.utf8": "7309694f9c9272c9e189a6109070c9ea",
        "w7.gb": "04b9c7b3221dc58c209d0f812fa45b61",
        "w8.ach": "2645e02d50af19aa7969f57a7823f444",
    },
}

MASK = (1 << 64) - 1
NAMES = ["Smith & Sons Ltd", "Acme Trading Company", "Northwind Shipping", "J. Alvarez", "Blue River Foods",
         "Dupont Freres SA", "Baker, Cole and Partners", "Kowalski Transport", 'Global Parts "Express"',
         "Oak Street Hardware", "Harbour Fish Market", "M. Okafor", "Silverline Optics GmbH", "Lee Brothers",
         "Cedar Office Supplies"]
STREETS = ["12 High Street", "480 Market Road, Unit 7", "9 Rue de la Paix", "77 Industrial Park East", "3 Canal Walk",
           "1500 Ocean Avenue, Floor 22"]
CITIES = ["London", "Rotterdam", "Hamburg", "Lyon", "Gdansk", "Chicago", "Osaka", "Porto"]
REMARKS = ["", "", "DELIVER BEFORE NOON", "FRAGILE", "CALL ON ARRIVAL", "PO 4471 <URGENT>", "SECOND DELIVERY"]
GOODS = ["Widget blue", "Hex bolt M8", "Cable 2m", "Paper A4 80g", "LED lamp", "Bracket L", "Gasket set", "Filter oil",
         "Valve 3/4", "Tape 50mm"]
CURRENCIES = ["EUR", "USD", "GBP", "JPY", "CHF", "CNY", "SEK", "PLN"]
SYMBOLS = ["MSFT", "IBM", "VOD.L", "SAP.DE", "7203.T", "NESN.S", "BRK.A", "AAPL"]
COLUMNS = ("msgType,orderId,date,time,custNo,custName,currency,amount,address,remark,itemCnt,"
           "sku1,desc1,qty1,price1,sku2,desc2,qty2,price2,total")


class Random:
    """SplitMix64."""

    def __init__(self, seed):
        self.state = seed

    def next(self):
        self.state = (self.state + 0x9E3779B97F4A7C15) & MASK
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK
        return z ^ (z >> 31)

    def below(self, limit):
        return self.next() % limit

    def pick(self, choices):
        return choices[self.next() % len(choices)]


def decimal(cents):
    return f"{cents // 100}.{cents % 100:02d}"


class Order:
    def __init__(self, random):
        self.date = f"{2020 + random.below(6):04d}{1 + random.below(12):02d}{1 + random.below(28):02d}"
        self.time = f"{random.below(24):02d}{random.below(60):02d}{random.below(60):02d}"
        self.id = f"ORD{random.next() % 10**13:013d}"
        self.customer = random.below(10**9)
        self.name = random.pick(NAMES)
        self.currency = random.pick(CURRENCIES)
        self.address = random.pick(STREETS) + ", " + random.pick(CITIES)
        self.remark = random.pick(REMARKS)
        count = min(random.below(21), random.below(21))
        self.items = [(f"SK{random.below(10**10):010d}", random.pick(GOODS), 1 + random.below(999),
                       5 + random.below(99999)) for _ in range(count)]
        self.amount = sum(quantity * price for _, _, quantity, price in self.items)

    def fixed(self):
        head = (f"{'ORDER01':8}{self.id:16}{self.date}{self.time}{self.customer:010d}{self.name:40}{self.currency}"
                f"{self.amount:015d}{self.address:60}{self.remark:32}{len(self.items):02d}")
        return head + "".join(f"{sku:12}{goods:14}{quantity:06d}{price:08d}"
                              for sku, goods, quantity, price in self.items) + "\n"

    def xml(self):
        items = "".join(f"<item><sku>{sku}</sku><desc>{escaped(goods)}</desc><qty>{quantity}</qty>"
                        f"<price>{decimal(price)}</price></item>" for sku, goods, quantity, price in self.items)
        return ('<?xml version="1.0" encoding="UTF-8"?>'
                f"<order><msgType>ORDER01</msgType><orderId>{self.id}</orderId><date>{self.date}</date>"
                f"<time>{self.time}</time><custNo>{self.customer}</custNo><custName>{escaped(self.name)}</custName>"
                f"<currency>{self.currency}</currency><amount>{decimal(self.amount)}</amount>"
                f"<address>{escaped(self.address)}</address><remark>{escaped(self.remark)}</remark>"
                f"<items>{items}</items></order>\n")

    def csv(self):
        row = ["ORDER01", self.id, self.date, self.time, str(self.customer), quoted(self.name), self.currency,
               decimal(self.amount), quoted(self.address), self.remark, str(len(self.items))]
        for item in self.first_two():
            row += item
        return ",".join(row + [decimal(self.amount)]) + "\n"

    def first_two(self):
        known = [(sku, goods, str(quantity), decimal(price)) for sku, goods, quantity, price in self.items[:2]]
        return known + [("", "", "", "")] * (2 - len(known))

    def json(self):
        # By hand, so that every amount keeps two decimals.
        items = ",".join(f'{{"sku":"{sku}","desc":{json.dumps(goods)},"qty":{quantity},"price":{decimal(price)}}}'
                         for sku, goods, quantity, price in self.items)
        return (f'{{"msgType":"ORDER01","orderId":"{self.id}","date":"{self.date}","time":"{self.time}",'
                f'"custNo":{self.customer},"custName":{json.dumps(self.name)},"currency":"{self.currency}",'
                f'"amount":{decimal(self.amount)},"address":{json.dumps(self.address)},'
                f'"remark":{json.dumps(self.remark)},"items":[{items}]}}\n')


def escaped(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def quoted(text):
    return '"' + text.replace('"', '""') + '"' if any(c in text for c in ',"\n') else text


def orders(folder, count):
    random = Random(20240229)
    with open(folder / "w1.dat", "w") as fixed, open(folder / "w2.xml", "w") as xml, \
            open(folder / "w3.csv", "w") as csv, open(folder / "w4.jsonl", "w") as lines:
        csv.write(COLUMNS + "\n")
        for _ in range(count):
            order = Order(random)
            fixed.write(order.fixed())
            xml.write(order.xml())
            csv.write(order.csv())
            lines.write(order.json())


def new_order(random, number, time, price, quantity, symbol, side):
    return [(35, "D"), (49, "BUYSIDE"), (56, "SELLSIDE"), (34, number + 1), (52, time),
            (11, f"CL{random.below(10**12):012d}"), (453, 2),
            (448, f"TRADER{random.below(1000):03d}"), (447, "D"), (452, 11),
            (448, f"FIRM{random.below(100):02d}"), (447, "D"), (452, 1),
            (1, f"ACCT{random.below(10**6):06d}"), (21, 1), (55, symbol), (54, side), (60, time), (38, quantity), (40, 2),
            (44, price), (15, random.pick(CURRENCIES)), (59, 0), (58, f"order {number}")]


def execution(random, number, time, price, quantity, symbol, side):
    filled = 100 * (1 + random.below(quantity // 100))
    return [(35, "8"), (49, "SELLSIDE"), (56, "BUYSIDE"), (34, number + 1), (52, time),
            (37, f"OR{random.below(10**12):012d}"), (11, f"CL{random.below(10**12):012d}"),
            (17, f"EX{random.below(10**12):012d}"), (150, "F"), (39, "2" if filled == quantity else "1"),
            (1, f"ACCT{random.below(10**6):06d}"), (55, symbol), (54, side), (38, quantity), (40, 2), (44, price),
            (15, random.pick(CURRENCIES)), (59, 0), (32, filled), (31, price), (30, "XLON"), (151, quantity - filled),
            (14, filled), (6, price), (60, time), (58, f"fill {number}")]


def tag_values(folder, count):
    """FIX 4.4: new orders with a group of two parties, and executions, in turn."""
    random = Random(4401)
    with open(folder / "w5.fix", "wb") as file:
        for number in range(count):
            time = (f"2024{1 + random.below(12):02d}{1 + random.below(28):02d}-{random.below(24):02d}:"
                    f"{random.below(60):02d}:{random.below(60):02d}.{random.below(1000):03d}")
            price = decimal(100 + random.below(50000))
            quantity = 100 * (1 + random.below(500))
            symbol = random.pick(SYMBOLS)
            side = random.pick("12")
            make = new_order if number % 2 == 0 else execution
            body = "".join(f"{tag}={value}\x01"
                           for tag, value in make(random, number, time, price, quantity, symbol, side))
            message = f"8=FIX.4.4\x019={len(body)}\x01{body}"
            file.write(f"{message}10={sum(message.encode()) % 256:03d}\x01\n".encode())


def card(random):
    """The fields of a 0200 request, by number."""
    number = f"4{random.below(10**15):015d}" if random.below(4) else f"6{random.below(10**18):018d}"
    month, day, hour = 1 + random.below(12), 1 + random.below(28), random.below(24)
    minute, second = random.below(60), random.below(60)
    return {2: number, 3: random.pick(["000000", "010000", "310000"]), 4: f"{random.below(10**8):012d}",
            7: f"{month:02d}{day:02d}{hour:02d}{minute:02d}{second:02d}", 11: f"{random.below(10**6):06d}",
            12: f"{hour:02d}{minute:02d}{second:02d}", 13: f"{month:02d}{day:02d}",
            22: random.pick(["051", "012", "071"]), 32: f"{{:0{6 + random.below(5)}d}}".format(random.below(10**6)),
            37: f"{random.below(10**12):012d}", 41: f"TERM{random.below(10**4):04d}",
            42: f"MERCHANT{random.below(10**7):07d}", 49: random.pick(["978", "840", "826", "156"])}


def packed(digits):
    return bytes.fromhex(digits if len(digits) % 2 == 0 else "0" + digits)


def ascii_field(number, value):
    return (f"{len(value):02d}" if number in (2, 32) else "").encode() + value.encode()


def bcd_field(number, value):
    if number in (2, 32):
        return packed(f"{len(value):02d}") + bytes.fromhex(value + "0" * (len(value) % 2))
    return value.encode() if number in (37, 41, 42, 49) else packed(value)


def cards(folder, count):
    """ISO 8583 of 1987: a binary bitmap; a length of two bytes before each message."""
    random = Random(8583)
    with open(folder / "w6.iso", "wb") as text, open(folder / "w6bcd.iso", "wb") as bcd:
        for _ in range(count):
            fields = sorted(card(random).items())
            bitmap = struct.pack(">Q", sum(1 << (64 - number) for number, _ in fields))
            for file, mti, field in (text, b"0200", ascii_field), (bcd, packed("0200"), bcd_field):
                message = mti + bitmap + b"".join(field(number, value) for number, value in fields)
                file.write(struct.pack(">H", len(message)) + message)


def chinese(folder, count):
    random = Random(18030)
    glyphs = [bytes([0xB0 + row, 0xA1 + cell]).decode("gb2312") for row in range(39) for cell in range(94)]

    def words():
        return "".join(random.pick(glyphs) for _ in range(40))

    text = "".join(words() + f" ORDER {random.below(10**8):08d} " + words() + "\n" for _ in range(max(1, count * 3 // 5)))
    (folder / "w7.utf8").write_bytes(text.encode("utf-8"))
    (folder / "w7.gb").write_bytes(text.encode("gb18030"))


class Batch:
    """PPD entries of one company, some with an addendum, between the batch's header and its control record."""

    BANK = "12104288"

    def __init__(self, random, number, count):
        self.records = []
        self.hash = self.debit = self.credit = 0
        company = f"{random.pick(NAMES)[:16]:16}{'':20}1{random.below(10**9):09d}"
        self.records.append(f"5200{company}PPD{'PAYROLL':10}{'':6}240301{'':3}1{self.BANK}{number:07d}")
        for entry in range(count):
            self.entry(random, entry + 1)
        self.lines = len(self.records) - 1  # entries and addenda
        self.records.append(f"8200{self.lines:06d}{self.hash % 10**10:010d}{self.debit:012d}{self.credit:012d}"
                            f"{company[36:]}{'':25}{self.BANK}{number:07d}")

    def entry(self, random, sequence):
        code = random.pick(["22", "22", "22", "27", "32", "37"])
        bank = f"{random.below(10**8):08d}"
        digit = -sum(int(d) * w for d, w in zip(bank, (3, 7, 1) * 3)) % 10
        cents = 1 + random.below(500000)
        addendum = random.below(4) == 0
        account, person = f"{random.below(10**10):010d}", random.pick(NAMES)[:22]
        self.records.append(f"6{code}{bank}{digit}{account:17}{cents:010d}{f'EMP{random.below(10**6):06d}':15}"
                            f"{person:22}{'':2}{addendum:d}{self.BANK}{sequence:07d}")
        if addendum:
            self.records.append(f"705{random.pick(REMARKS[2:]):80}0001{sequence:07d}")
        self.hash += int(bank)
        if code in ("27", "37"):
            self.debit += cents
        else:
            self.credit += cents


def payments(folder, count, batch_size=1000):
    """One NACHA file of that many entries, filled up with nines to blocks of ten records."""
    random = Random(94)
    batches = [Batch(random, 1 + first // batch_size, min(batch_size, count - first))
               for first in range(0, count, batch_size)]
    records = [f"101 231380104 1210428822403011055A094101{'Federal Reserve Bank':23}{'My Bank Name':23}{'':8}"]
    for batch in batches:
        records += batch.records
    lines = len(records) + 1
    entries = sum(batch.lines for batch in batches)
    records.append(f"9{len(batches):06d}{(lines + 9) // 10:06d}{entries:08d}"
                   f"{sum(batch.hash for batch in batches) % 10**10:010d}{sum(batch.debit for batch in batches):012d}"
                   f"{sum(batch.credit for batch in batches):012d}{'':39}")
    records += ["9" * 94] * (-lines % 10)
    assert all(len(record) == 94 for record in records)
    (folder / "w8.ach").write_text("".join(record + "\n" for record in records))


def sums(folder):
    return {name: hashlib.md5((folder / name).read_bytes()).hexdigest() for name in FILES}


def check(folder, count):
    """Known sums are written here; for other counts, those that were noted when the files were made."""
    try:
        known = SUMS.get(count) or json.loads((folder / f"sums-{count}.json").read_text())
        return [name for name, found in sums(folder).items() if found != known[name]]
    except OSError as error:
        return [str(error)]


def make(folder, count):
    folder.mkdir(parents=True, exist_ok=True)
    for part in orders, tag_values, cards, chinese, payments:
        part(folder, count)
    if count not in SUMS:
        (folder / f"sums-{count}.json").write_text(json.dumps(sums(folder), indent=2) + "\n")


def main():
    parser = argparse.ArgumentParser(description="the bench's data")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("count", type=int, nargs="?", default=DEFAULT)
    arguments = parser.parse_args()
    if not arguments.check:
        make(arguments.folder, arguments.count)
    wrong = check(arguments.folder, arguments.count)
    if wrong:
        sys.exit(f"not the bench's data for {arguments.count} messages: {', '.join(wrong)}")


if __name__ == "__main__":
    main()
