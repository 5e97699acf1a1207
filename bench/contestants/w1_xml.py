"""w1_xml.py INPUT OUTPUT: the fixed-length order as XML."""
import sys
from xml.sax.saxutils import escape


def text(field):
    return escape(field.rstrip(" "))


def decimal(digits):
    cents = int(digits)
    return f"{cents // 100}.{cents % 100:02d}"


def items(line, count):
    for at in range(200, 200 + 40 * count, 40):
        yield (f"<item><sku>{text(line[at:at + 12])}</sku><desc>{text(line[at + 12:at + 26])}</desc>"
               f"<qty>{int(line[at + 26:at + 32])}</qty><price>{decimal(line[at + 32:at + 40])}</price></item>")


def order(line):
    count = int(line[198:200])
    if len(line) != 201 + 40 * count:
        raise ValueError("wrong length: " + line)
    return (f'<?xml version="1.0" encoding="UTF-8"?><order><msgType>{text(line[0:8])}</msgType>'
            f"<orderId>{text(line[8:24])}</orderId><date>{line[24:32]}</date><time>{line[32:38]}</time>"
            f"<custNo>{int(line[38:48])}</custNo><custName>{text(line[48:88])}</custName>"
            f"<currency>{text(line[88:91])}</currency><amount>{decimal(line[91:106])}</amount>"
            f"<address>{text(line[106:166])}</address><remark>{text(line[166:198])}</remark>"
            f"<items>{''.join(items(line, count))}</items></order>\n")


with open(sys.argv[1], encoding="ascii", newline="\n") as source, open(sys.argv[2], "w", encoding="ascii") as target:
    for record in source:
        target.write(order(record))
