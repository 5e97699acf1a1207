#!/usr/bin/env bash
# Two BAI2 files: records inside records, continued records, counted lists inside a list of fields. A second tool computes
# the control totals from the values that were parsed and compares them with the control records. Then the files are
# written again: with the same bytes, with every record in one line, and with lines of at most 80 bytes.
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
parse() { cvt2 parse -c "${2-$here}" -m Bai2File -f bai2 --all --json "$1"; }      # FILE [CONFIGURATION]
generate() { cvt2 generate -c "${2-$here}" -m Bai2File -t bai2 --out-framing none "$1"; }

# control JSON: the totals and numbers of each account, group and the file, computed and as stated.
control() {
  python3 - "$1" <<'PYTHON'
import json, sys
file = json.load(open(sys.argv[1]))['fields']

def amount(text):
    return int(text) if text else 0

def check(what, found, stated):
    assert found == int(stated), f'{what}: computed {found}, stated {stated}'
    return found

def lines(record, wraps):
    return 1 + len(record[wraps].split())

total = records = 0
for group in file['Groups']:
    group_total = group_records = 0
    for account in group['Accounts']:
        trailer = account['AccountTrailer']
        account_total = sum(amount(one['SumAmount']) for one in account['Summaries'])
        account_total += sum(amount(one['Amount']) for one in account['Transactions'])
        account_records = lines(account, 'AccountWraps') + 1
        account_records += sum(lines(one, 'TransactionWraps') for one in account['Transactions'])
        group_total += check('total of account ' + account['Account'], account_total, trailer['AccountTotal'])
        group_records += check('records of account', account_records, trailer['AccountRecords'])
    trailer = group['GroupTrailer']
    check('accounts of the group', len(group['Accounts']), trailer['GroupAccounts'])
    total += check('total of the group', group_total, trailer['GroupTotal'])
    records += check('records of the group', group_records + 2, trailer['GroupRecords'])
trailer = file['FileTrailer']
check('groups', len(file['Groups']), trailer['FileGroups'])
check('total of the file', total, trailer['FileTotal'])
check('records of the file', records + 2, trailer['FileRecords'])
accounts = sum(len(group['Accounts']) for group in file['Groups'])
print(f"{records + 2} records, {len(file['Groups'])} groups, {accounts} accounts, total {total}: as in the control records")
PYTHON
}

# same JSON OTHER: the same values, wherever records were continued.
same() {
  python3 - "$@" <<'PYTHON'
import json, sys
def bare(value):
    if isinstance(value, list):
        return [bare(one) for one in value]
    if isinstance(value, dict):
        return {name: bare(one) for name, one in value.items() if not name.endswith('Wraps') and name != 'LastLine'}
    return value
one, other = (bare(json.load(open(name))) for name in sys.argv[1:3])
assert one == other, 'other values'
PYTHON
}

# The same definition, but for lines of at most 80 bytes; and one that does not remember where records were continued.
cp -rT "$here" "$out/wrapped"
sed -i 's/psContinuation="88"/psContinuation="88" nMaxRecord="80"/' "$out/wrapped/Message/Bai2File.xml"

for name in sample1 sample2; do
  file=$here/data/$name.txt
  parse "$file" >"$out/$name.json" || { fail "$name: not parsed"; continue; }
  stated=$(control "$out/$name.json") || fail "$name: control totals"
  say "$name: $stated"

  generate "$out/$name.json" >"$out/$name.txt"
  cmp "$file" "$out/$name.txt" || fail "$name: other bytes"

  sed -E 's/"(Account|Transaction)Wraps":"[0-9 ]*"/"\1Wraps":""/g' "$out/$name.json" >"$out/joined.json"
  generate "$out/joined.json" >"$out/joined.txt"
  ! grep -q '^88' "$out/joined.txt" || fail "$name: a record is continued without need"
  parse "$out/joined.txt" >"$out/again.json"
  same "$out/$name.json" "$out/again.json" || fail "$name: other values with records in one line"

  generate "$out/joined.json" "$out/wrapped" >"$out/wrapped.txt"
  [ "$(awk '{ print length($0) }' "$out/wrapped.txt" | sort -n | tail -n 1)" -le 80 ] || fail "$name: a line of more than 80 bytes"
  parse "$out/wrapped.txt" "$out/wrapped" >"$out/again.json"
  same "$out/$name.json" "$out/again.json" || fail "$name: other values in lines of 80 bytes"
  say "$(printf '%s: written with the same bytes; %d lines in one a record, %d lines of up to 80 bytes' "$name" \
    "$(wc -l <"$out/joined.txt")" "$(wc -l <"$out/wrapped.txt")")"
done

# refused WHAT FILE TEXT
refused() {
  local status=0
  parse "$2" >"$out/bad.json" 2>"$out/error" || status=$?
  [ "$status" = 65 ] || fail "$1: exit status $status instead of 65"
  grep -qF "$3" "$out/error" || fail "$1: $(cat "$out/error")"
  say "$(sed "s|$here/||; s|$out/||" "$out/error")"
}
refused "an unknown record" "$here/data/bad/sample-parseError.txt" 'expected one of the records 01, 02, 03, 16, 49, 98, 99, found a record "00"'
sed 's/15,D,3,0/15,D,4,0/' "$here/data/sample2.txt" >"$out/count.txt"
refused "a wrong count" "$out/count.txt" 'Field[Groups[2].Accounts[0].Summaries[2].SumFunds.SumDistributed.SumDistributions[3]]'
sed 's/,70000000,15,D/,70000000,15,X/' "$here/data/sample2.txt" >"$out/kind.txt"
refused "an unknown kind of funds" "$out/kind.txt" 'expected a value of SumFundsType that chooses what follows, found "X"'

exit "$failed"
