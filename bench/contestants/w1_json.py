"""w1_json.py INPUT OUTPUT: the fixed-length order as JSON."""
import json
import sys


def text(field):
    return json.dumps(field.rstrip(" "))


def decimal(digits):
    cents = int(digits)
    return f"{cents // 100}.{cents % 100:02d}"


def items(line, count):
    return ",".join(f'{{"sku":{text(line[at:at + 12])},"desc":{text(line[at + 12:at + 26])},'
                    f'"qty":{int(line[at + 26:at + 32])},"price":{decimal(line[at + 32:at + 40])}}}'
                    for at in range(200, 200 + 40 * count, 40))


def order(line):
    count = int(line[198:200])
    if len(line) != 201 + 40 * count:
        raise ValueError("wrong length: " + line)
    return (f'{{"msgType":{text(line[0:8])},"orderId":{text(line[8:24])},"date":"{line[24:32]}","time":"{line[32:38]}",'
            f'"custNo":{int(line[38:48])},"custName":{text(line[48:88])},"currency":{text(line[88:91])},'
            f'"amount":{decimal(line[91:106])},"address":{text(line[106:166])},"remark":{text(line[166:198])},'
            f'"items":[{items(line, count)}]}}\n')


with open(sys.argv[1], encoding="ascii", newline="\n") as source, open(sys.argv[2], "w", encoding="ascii") as target:
    for record in source:
        target.write(order(record))
