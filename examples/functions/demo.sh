#!/usr/bin/env bash
# Card sales in, a statement out, every value of it made by functions. Checked: the statement byte by byte, each value by
# a second program, and that a value which a function refuses ends the conversion.
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
convert() { cvt2 convert -c "$here" -m Sales -f sales -t statement -o "$2" "$1"; }  # input, output

say "== the statement"
convert "$here/data/sales.dat" "$out/sales.xml" || fail "not converted"
cmp "$here/expected/sales.xml" "$out/sales.xml" || fail "not the expected statement"
say "$(sed -n '/<sale /,/<\/sale>/p;/<\/sale>/q' "$out/sales.xml")"

say "== each value worked out anew"
checked=$(python3 "$here/check.py" "$here/data/sales.dat" "$out/sales.xml") || fail "check.py: other values"
say "$checked"

say "== a country that the table does not have, and an amount that is none: refused"
# refused FROM TO ERROR: with FROM replaced by TO the sales are not converted, and the error says why.
refused() {
  local status=0
  sed "s/$1/$2/" "$here/data/sales.dat" >"$out/bad.dat"
  convert "$out/bad.dat" "$out/bad.xml" 2>"$out/error" || status=$?
  [ "$status" = 65 ] || fail "$2: expected exit status 65, found $status"
  [ ! -e "$out/bad.xml" ] || fail "$2: a statement was left"
  grep -qF "$3" "$out/error" || fail "$2: another error: $(cat "$out/error")"
  say "$(sed "s|$out/||" "$out/error")"
}
refused 'chKiosk' 'xxKiosk' 'Func[lookUp] Arg[2] Len[2]: expected a key of the table, found none'
refused '0000008999' '00000089,9' 'Func[impliedToReal] Arg[1] Len[10] Offset[8]: expected'

exit "$failed"
