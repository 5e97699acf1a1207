"""w8_xml.py INPUT OUTPUT: a NACHA file of PPD batches as a payment document in XML."""
import sys
from xml.sax.saxutils import escape

CREDITS = {"21", "22", "23", "24", "31", "32", "33", "34", "41", "42", "43", "44", "51", "52", "53", "54"}
ACCOUNTS = {"22": "CACC", "27": "CACC", "32": "SVGS", "37": "SVGS", "52": "LOAN", "55": "LOAN"}
METHODS = {"200": "MIX", "220": "TRF", "225": "DD"}


def decimal(digits):
    cents = int(digits)
    return f"{cents // 100}.{cents % 100:02d}"


class Document:
    def __init__(self, target):
        self.target = target
        self.open = []

    def indent(self):
        return "  " * len(self.open)

    def start(self, name, attributes=""):
        self.target.write(f"{self.indent()}<{name}{attributes}>\n")
        self.open.append(name)

    def end(self):
        name = self.open.pop()
        self.target.write(f"{self.indent()}</{name}>\n")

    def leaf(self, name, text, attributes=""):
        """An element with a text, and none without."""
        text = text.strip(" ")
        if text:
            self.target.write(f"{self.indent()}<{name}{attributes}>{escape(text)}</{name}>\n")

    def group(self, name, **leaves):
        """Elements with texts inside another, and nothing where there is no text."""
        if any(text.strip(" ") for text in leaves.values()):
            self.start(name)
            for leaf, text in leaves.items():
                self.leaf(leaf, text)
            self.end()


def header(document, head, control):
    if head[0] != "1" or control[0] != "9":
        raise ValueError("no file header or control")
    document.start("GrpHdr")
    document.leaf("MsgId", head[13:23])
    document.leaf("CreDt", head[23:29])
    document.leaf("CreTm", head[29:33])
    document.leaf("NbOfPmtInf", str(int(control[1:7])))
    document.leaf("TtlDbt", decimal(control[31:43]))
    document.leaf("TtlCdt", decimal(control[43:55]))
    document.group("InitgPty", Nm=head[63:86], Id=head[13:23])
    document.group("FwdgAgt", Nm=head[40:63], Id=head[3:13])
    document.end()


def entry(document, record, addenda):
    code = record[1:3]
    document.start("CdtTrfTxInf")
    document.group("PmtId", InstrId=record[79:94], EndToEndId=record[39:54])
    document.leaf("CdtDbtInd", "CRDT" if code in CREDITS else "DBIT")
    document.start("Amt")
    document.leaf("InstdAmt", decimal(record[29:39]), ' Ccy="USD"')
    document.end()
    document.group("CdtrAgt", MmbId=record[3:11])
    document.group("Cdtr", Nm=record[54:76])
    document.group("CdtrAcct", Id=record[12:29], Tp=ACCOUNTS.get(code, ""))
    if addenda:
        document.start("RmtInf")
        for addendum in addenda:
            document.leaf("Ustrd", addendum[3:83])
        document.end()
    document.end()


def entries(records):
    """Each entry with its addenda."""
    for number, record in enumerate(records):
        if record[0] == "6":
            last = number + 1
            while last < len(records) and records[last][0] == "7":
                last += 1
            yield record, records[number + 1:last]
        elif record[0] != "7":
            raise ValueError("expected an entry or an addendum: " + record)


def batch(document, head, records, control):
    if head[50:53] != "PPD":
        raise ValueError("expected a PPD batch: " + head)
    document.start("PmtInf")
    document.leaf("PmtInfId", str(int(head[87:94])))
    document.leaf("PmtMtd", METHODS.get(head[1:4], "OTHR"))
    document.leaf("NbOfTxs", str(sum(record[0] == "6" for record in records)))
    document.group("PmtTpInf", LclInstrm=head[50:53], CtgyPurp=head[53:63])
    document.leaf("ReqdExctnDt", head[69:75])
    document.group("Dbtr", Nm=head[4:20], Id=head[40:50])
    document.group("DbtrAgt", MmbId=head[79:87])
    document.leaf("BtchDbt", decimal(control[20:32]))
    document.leaf("BtchCdt", decimal(control[32:44]))
    for record, addenda in entries(records):
        entry(document, record, addenda)
    document.end()


def convert(records, target):
    if any(len(record) != 94 for record in records):
        raise ValueError("expected records of 94 characters")
    while records[-1] == "9" * 94:
        records.pop()
    target.write('<?xml version="1.0" encoding="UTF-8"?>\n')
    document = Document(target)
    document.start("Document", ' xmlns="urn:iso:std:iso:20022:tech:xsd:pain.001.001.09"')
    document.start("CstmrCdtTrfInitn")
    header(document, records[0], records[-1])
    starts = [number for number, record in enumerate(records) if record[0] == "5"]
    for first, end in zip(starts, starts[1:] + [len(records) - 1]):
        if records[end - 1][0] != "8":
            raise ValueError("a batch without its control record")
        batch(document, records[first], records[first + 1:end - 1], records[end - 1])
    document.end()
    document.end()


with open(sys.argv[1], encoding="ascii") as source, open(sys.argv[2], "w", encoding="ascii") as output:
    convert(source.read().splitlines(), output)
