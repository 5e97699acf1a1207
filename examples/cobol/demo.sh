#!/usr/bin/env bash
# Mainframe records of three copybooks to JSON lines and back, compared with the published lines.
#
#   demo.sh [--quiet]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
quiet=
[ "${1-}" = --quiet ] && quiet=1
data=$here/data
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
failed=0

say() { [ -n "$quiet" ] || printf '%s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }
# The count of messages is told on standard error.
run() { cvt2 "$@" 2>"$out/notes" || fail "$* : $(cat "$out/notes")"; }

say "== test1: EBCDIC, binary and packed numbers, a counted group in room for 80"
run convert -c "$here" -m Customer -f cobol -t json --framing rec=2202 --out-framing line -o "$out/test1.txt" "$data/test1.bin"
cmp -s "$data/test1.txt" "$out/test1.txt" || fail "test1: not the published lines"
run convert -c "$here" -m CustomerJson -f json -t cobol --framing line --out-framing none -o "$out/test1.bin" "$data/test1.txt"
cmp -s "$data/test1.bin" "$out/test1.bin" || fail "test1: not the same bytes"
say "   10 records: the published lines; from the lines, 22020 bytes: identical"

say "== test21: counted groups inside counted groups, without room: $(cat "$data/test21.dat")"
run convert -c "$here" -m Groups -f cobol -t json -o "$out/test21.json" "$data/test21.dat"
python3 - "$data/test21.txt" "$out/test21.json" <<'PYTHON' || fail "test21: not the published lines"
import json, sys
lines = [json.loads(line) for line in open(sys.argv[1])]
sys.exit(lines != json.load(open(sys.argv[2])))
PYTHON
run convert -c "$here" -m GroupsJson -f json -t cobol -o "$out/test21.dat" "$out/test21.json"
cmp -s "$data/test21.dat" "$out/test21.dat" || fail "test21: not the same bytes"
say "   5 records: the published lines; from JSON, 18 bytes: identical"

say "== test19: display numbers, some blank, some letters"
run convert -c "$here" -m Amounts -f cobol -t json --framing rec=80 --out-framing line -o "$out/test19.txt" "$data/test19.dat"
cmp -s "$data/test19.txt" "$out/test19.txt" || fail "test19: not the published lines"
cvt2 parse -c "$here" -m Amounts -f cobol --json --framing rec=80 "$data/test19.dat" 2>"$out/notes" |
  cvt2 generate -c "$here" -t 02 --out-framing none >"$out/test19.dat" 2>"$out/notes" || fail "test19: $(cat "$out/notes")"
cmp -s "$data/test19.dat" "$out/test19.dat" || fail "test19: not the same bytes"
say "   7 records: the published lines; parsed and generated again, 560 bytes: identical"

say "== damaged records are refused"
refused() {
  local status=0
  cvt2 parse -c "$here" -m "$2" -f cobol "$3" >"$out/ignored" 2>"$out/error" || status=$?
  [ $status = 65 ] || fail "$1: exit status $status instead of 65"
  grep -q 'Field\[.*Offset\[' "$out/error" || fail "$1: the error names no field: $(cat "$out/error")"
  say "   $1: $(sed 's/.*Field/Field/' "$out/error")"
}
printf '21A3BC' >"$out/short"
refused "a group that is cut" Groups "$out/short"
printf '3' >"$out/many"
refused "three groups of two" Groups "$out/many"
head -c 2202 "$data/test1.bin" >"$out/record"
{ head -c 40 "$out/record" && printf '\201\017' && tail -c +43 "$out/record"; } >"$out/count"
refused "810 accounts of 80" Customer "$out/count"

exit $failed
