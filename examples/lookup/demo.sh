#!/usr/bin/env bash
# Orders in, invoices out, with what a database knows of the customer. Checked: the invoices byte by byte, the rows of
# the audit table, that an unknown customer gets the defaults, and that SQL in a customer's name stays a name.
#
#   demo.sh [--quiet] [OUTPUT_FOLDER]     the command cvt2 must be in the path
#
# The database is a new SQLite file. Another empty one: its URL in VEL_DBS_URL, and in SQL_CLIENT a command that runs
# the statements of its standard input there and prints rows as a|b|c ("psql -qAtX").
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
same() { [ "$2" = "$3" ] || fail "$1: expected $2, found $3"; }  # what, expected, found

if [ -n "${VEL_DBS_URL-}" ]; then
  sql() { $SQL_CLIENT; }
else
  rm -f "$out/shop.db"
  export VEL_DBS_URL=sqlite:$out/shop.db
  sql() { sqlite3 -bail "$out/shop.db"; }
fi
count() { sql <<<"SELECT count(*) FROM $1;"; }

# order NAME: converts data/NAME.dat, which must give expected/NAME.xml and one row in the audit table.
order() {
  local before
  before=$(count audit)
  cvt2 convert -v -c "$here" -m Order -f order -t invoice -o "$out/$1.xml" "$here/data/$1.dat" 2>"$out/notes" ||
    { fail "$1: not converted: $(cat "$out/notes")"; return; }
  cmp "$here/expected/$1.xml" "$out/$1.xml" || fail "$1: not the expected invoice"
  same "$1: rows in audit" $((before + 1)) "$(count audit)"
}
shown() { say "$(printf '%-18s %s' "$1" "$(sed -n "s/^ *\($2.*\)/\1/p" "$out/$1.xml")")"; }  # name, element
noted() { grep -q 'Warning: sql\[SELECT .*\] not find data!!' "$out/notes"; }

sql <"$here/schema.sql"

say "== orders of customers that the database knows"
for name in order quoted credit; do
  order "$name"
  ! noted || fail "$name: its customer was not found"
  shown "$name" '<name>'
done

say "== a customer that it does not know: the defaults, and a warning"
order unknown
noted || fail "unknown: no warning"
shown unknown '<name>'

say "== customers whose name is SQL: looked up, not run"
for name in attack-every-row attack-delete; do
  order "$name"
  noted || fail "$name: found a customer"
  shown "$name" '<customer '
done
same "customers left" 3 "$(count customer)"

say "== an order whose number is none: refused before anything is written"
sed 's/0000001050/10-50     /' "$here/data/order.dat" >"$out/bad.dat"
status=0
cvt2 convert -c "$here" -m Order -f order -t invoice -o "$out/bad.xml" "$out/bad.dat" 2>"$out/error" || status=$?
same "exit status" 65 "$status"
[ ! -e "$out/bad.xml" ] || fail "an invoice was left"
grep -q 'Func\[sqlNumber\] Arg\[1\]' "$out/error" || fail "the error names no function: $(cat "$out/error")"
say "$(sed "s|$out/||" "$out/error")"

say "== the audit table: order, customer, items, total in cents"
sql >"$out/audit.txt" \
  <<<'SELECT order_no, customer, items, CAST(round(total * 100) AS INTEGER) FROM audit ORDER BY order_no;'
cmp "$here/expected/audit.txt" "$out/audit.txt" || fail "not the expected rows"
say "$(cat "$out/audit.txt")"

exit "$failed"
