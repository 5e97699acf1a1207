#!/usr/bin/env bash
# ISO 20022 messages: XML to JSON and back. A second program, Python, checks them: the JSON of the three pairs is the
# tree that their publisher gives, every value of the XML stands in the JSON, and the XML that comes back is the one
# that went in.
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
check() { (IFS=$'\t'; printf '%s\n' "$*") >>"$out/checks"; }  # all of them are made at the end
: >"$out/checks"

# there_and_back MESSAGE NAME: data/NAME.xml to JSON, and that to XML.
there_and_back() {
  cvt2 convert -c "$here" -m "${1}Xml" -f xml -t json -o "$out/$2.json" "$here/data/$2.xml" 2>"$out/error" ||
    { fail "$2: not converted: $(cat "$out/error")"; return; }
  cvt2 convert -c "$here" -m "${1}Json" -f json -t xml -o "$out/$2.xml" "$out/$2.json" 2>"$out/error" ||
    { fail "$2: not converted back: $(cat "$out/error")"; return; }
  check values "$here/data/$2.xml" "$out/$2.json"
  check xml "$here/data/$2.xml" "$out/$2.xml"
  say "$(printf '%-30s %5d bytes of XML, %5d of JSON' "$2" "$(wc -c <"$out/$2.xml")" "$(wc -c <"$out/$2.json")")"
}

say "== pairs of XML and JSON: the published JSON, in both directions"
for pair in Acmt007:valid_acmt_v03 Camt055:valid_camt_v09 Pain002:valid_pain_v11; do
  name=${pair#*:}
  there_and_back "${pair%:*}" "$name"
  check json "$here/data/$name.json" "$out/$name.json"
  cvt2 convert -c "$here" -m "${pair%:*}Json" -f json -t xml -o "$out/$name.from.xml" "$here/data/$name.json"
  check xml "$here/data/$name.xml" "$out/$name.from.xml"
done

say "== statements and a payment"
there_and_back Camt053v2 camt053.v2.minimal
there_and_back Camt053v2 camt053.v2.multi.statement
there_and_back Camt053v4 camt053.v4
there_and_back Pacs008 pacs008
cmp "$here/data/pacs008.xml" "$out/pacs008.xml" || fail "pacs008: not the same bytes"
cmp "$here/data/camt053.v4.xml" "$out/camt053.v4.xml" || fail "camt053.v4: not the same bytes"
check amounts "$out/camt053.v2.minimal.json" 18.15 27.00 35.00 2700 8.85
check amounts "$out/pacs008.json" 46154.49 46154.49

# refused WHAT MESSAGE FROM TO FILE LINE: the conversion must fail with that text and leave nothing.
refused() {
  local status=0
  cvt2 convert -c "$here" -m "$2" -f "$3" -t "$4" -o "$out/refused" "$5" 2>"$out/error" || status=$?
  [ "$status" = 65 ] || fail "$1: exit status $status, not 65"
  [ ! -e "$out/refused" ] || fail "$1: something was written"
  grep -qF "$6" "$out/error" || fail "$1: $(cat "$out/error")"
  say "$(sed "s|$here/||; s|$out/||" "$out/error")"
}

say "== refused: a statement file without a statement, and JSON that the definition does not allow"
refused "no statement" Camt053v2Xml xml json "$here/data/camt053.v2.wrong.xml" \
  'expected <Stmt> at least 1 times, found 0.'
sed 's/"Value": 27.00/"Value": "27.00"/' "$out/camt053.v2.minimal.json" >"$out/text.json"
refused "a text for an amount" Camt053v2Json json xml "$out/text.json" 'expected a number, found text "27.00".'
sed 's/"IBAN"/"Iban"/' "$out/camt053.v2.minimal.json" >"$out/name.json"
refused "an unknown member" Camt053v2Json json xml "$out/name.json" 'found member "Iban". Write IBAN;'

python3 "$here/check.py" <"$out/checks" || failed=1
exit "$failed"
