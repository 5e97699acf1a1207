#!/usr/bin/env bash
# A table of credit transfers, columns found by their names, into ISO 20022 pain.001.001.03, compared with the XML that
# the table's publisher makes of it, element by element, by a second tool. The two defects of that XML are the only
# differences.
#
#   demo.sh [--quiet] [OUTPUT_FOLDER]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
quiet=
[ "${1-}" = --quiet ] && { quiet=1; shift; }
out=${1-}
[ -n "$out" ] || { out=$(mktemp -d); trap 'rm -rf "$out"' EXIT; }
mkdir -p "$out"
failed=0

say() { [ -n "$quiet" ] || printf '%s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }

say "== the table as a payment"
table=$here/data/template.csv
cvt2 convert -c "$here" -m PaymentTable -f table -t pain -o "$out/pain.xml" "$table"

python3 - "$out/pain.xml" "$here/expected/pain.001.001.03.xml" "$table" >"$out/compared" <<'PYTHON' || fail "$(cat "$out/compared")"
import csv, sys
from xml.etree import ElementTree as tree

def leaves(element, path, into):
    """Every attribute and every text, in document order, with white space taken off its ends."""
    into += [(f'{path}/@{name}', value) for name, value in element.attrib.items()]
    path += '/' + element.tag.split('}')[1]
    if len(element) == 0:
        into.append((path, (element.text or '').strip()))
    for child in element:
        leaves(child, path, into)
    return into

ours, published = (leaves(tree.parse(name).getroot(), '', []) for name in sys.argv[1:3])
different = [(path, a, b) for (path, a), (other, b) in zip(ours, published) if (path, a) != (other, b)]
wrong = [('/Document/CstmrCdtTrfInitn/GrpHdr/NbOfTxs', '4', '2')]
assert len(ours) == len(published), f'{len(ours)} values instead of {len(published)}'
assert different == wrong, f'differences {different}'
raw = open(sys.argv[2]).read()
assert '<BtchBookg>\n            true</BtchBookg>' in raw, 'the published BtchBookg has been mended'

rows = list(csv.DictReader(open(sys.argv[3], newline='')))
amounts = [value for path, value in ours if path.endswith('/InstdAmt')]
assert amounts == [row['payment_amount'] for row in rows], amounts
print(f'{len(ours)} values, {len(ours) - 1} as published; NbOfTxs is 4, published was 2; '
      f'{len(rows)} transfers of {sum(map(int, amounts))} EUR together')
PYTHON
say "$(cat "$out/compared")"

say "== the table read and written again, byte for byte"
cvt2 parse -c "$here" -m PaymentTable -f table --json "$table" |
  cvt2 generate -c "$here" -m PaymentTable -t table --out-framing none >"$out/table.csv"
cmp "$table" "$out/table.csv" || fail "the table that was written differs"

say "== its columns in another order, in quotes: the same payment"
python3 - "$table" "$out/turned.csv" <<'PYTHON'
import csv, sys
rows = [list(reversed(row)) for row in csv.reader(open(sys.argv[1], newline=''))]
csv.writer(open(sys.argv[2], 'w', newline=''), quoting=csv.QUOTE_ALL).writerows(rows)
PYTHON
cvt2 convert -c "$here" -m PaymentTable -f table -t pain -o "$out/turned.xml" "$out/turned.csv"
cmp "$out/pain.xml" "$out/turned.xml" || fail "another order of columns made another payment"

# refused WHAT SED_SCRIPT TEXT: the table changed by the script must be refused with that text, and leave no output.
refused() {
  local status=0
  sed "$2" "$table" >"$out/bad.csv"
  cvt2 convert -c "$here" -m PaymentTable -f table -t pain -o "$out/bad.xml" "$out/bad.csv" 2>"$out/error" || status=$?
  [ "$status" = 65 ] || fail "$1: exit status $status instead of 65"
  [ ! -e "$out/bad.xml" ] || fail "$1: an output file was left"
  grep -qF "$3" "$out/error" || fail "$1: $(cat "$out/error")"
  say "$(printf '%-22s %s' "$1" "$(sed "s|$out/||" "$out/error")")"
}
say "== damaged tables are refused"
refused "a column of no name" '1s/,currency,/,curency,/' 'found "curency". Define it'
refused "a row cut short" '3s/,[^,]*$/\r/' 'expected another field in the record'
refused "a quote in a value" '2s/Acme Corp/Acme "Corp"/' 'expected no quote inside a field without quotes'
refused "no amount" '4s/,250,/,,/' 'Field[Rows[2].payment_amount]'

exit "$failed"
