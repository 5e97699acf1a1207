#!/usr/bin/env bash
# Fedwire texts - tags in braces, fields of fixed length, fields that end with an asterisk, most of them optional - into
# JSON, whose values a second tool compares with their publisher's; and from JSON into texts of the same values.
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
toJson() { cvt2 convert -c "$here" -m FedWire -f fedwire -t json -o "$2" "$1"; }
toText() { cvt2 convert -c "$here" -m FedWireJson -f json -t fedwire -o "$2" "$1"; }

# values OURS PUBLISHED: both have the same values that are not empty, but for one that is known.
values() {
  python3 - "$@" <<'PYTHON'
import json, sys
def leaves(value, path=''):
    if isinstance(value, dict):
        for name, one in value.items():
            yield from leaves(one, f'{path}.{name}' if path else name)
    elif value != '':
        yield path, value
ours, published = (dict(leaves(json.load(open(name))['fedWireMessage'])) for name in sys.argv[1:3])
different = {path: (ours.get(path), published.get(path)) for path in ours | published
             if ours.get(path) != published.get(path)}
known = {'remittanceOriginator.remittanceData.addressLineFour': ('Address Line One', 'Address Line Four')}
expected = known if 'PlusStructuredRemittance' in sys.argv[2] else {}
assert different == expected, different
print(f'{len(ours)} values, {len(different)} other than published')
PYTHON
}

for text in "$here"/data/*.txt; do
  name=$(basename "$text" .txt)
  toJson "$text" "$out/$name.json" || { fail "$name: not converted"; continue; }
  told=$(values "$out/$name.json" "$here/expected/$name.json") || fail "$name: other values"
  toText "$out/$name.json" "$out/$name.txt" || { fail "$name: not converted back"; continue; }
  toJson "$out/$name.txt" "$out/again.json"
  cmp "$out/$name.json" "$out/again.json" || fail "$name: other values after the way back"
  say "$(printf '%-57s %s; the same from JSON and back' "$name" "$told")"
done

say "== records in another order are put in theirs"
{ sed '$!d' "$here/data/fedWireMessage-BankTransfer.txt"; echo; sed '$d' "$here/data/fedWireMessage-BankTransfer.txt"; } >"$out/turned.txt"
toJson "$out/turned.txt" "$out/turned.json"
cmp "$out/fedWireMessage-BankTransfer.json" "$out/turned.json" || fail "another order made other values"

# refused FILE TEXT
refused() {
  local status=0
  toJson "$1" "$out/bad.json" 2>"$out/error" || status=$?
  [ "$status" = 65 ] || fail "$1: exit status $status instead of 65"
  [ ! -e "$out/bad.json" ] || fail "$1: an output file was left"
  grep -qF "$2" "$out/error" || fail "$1: $(cat "$out/error")"
  say "$(sed "s|$here/||; s|$out/||" "$out/error")"
}
say "== refused"
refused "$here/data/bad/fedWireMessage-InvalidTag.txt" 'found a record "1599"'
refused "$here/data/bad/fedWireMessage-MissingRequiredTag.txt" 'SenderShortName] Offset[111]: expected "*" behind the field'
sed '/^{3600}/d' "$here/data/fedWireMessage-BankTransfer.txt" >"$out/missing.txt"
refused "$out/missing.txt" 'Field[BusinessFunctionCodeTag] Offset[1067]: expected the record "3600", found the end'

exit "$failed"
