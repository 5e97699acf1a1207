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

# compare OURS PUBLISHED: the files of one folder hold what those of the other do, but for a number that is known.
compare() {
  python3 - "$@" <<'PYTHON'
import json, pathlib, sys
def read(folder, name):
    return json.loads((pathlib.Path(folder) / name).read_text(encoding='utf-8'))
names = sorted(file.name for file in pathlib.Path(sys.argv[2]).glob('*.json'))
for name in names:
    ours, published = (read(folder, name) for folder in sys.argv[1:3])
    if name == 'location_coordinates.json':
        assert published['Contact Phone Number'] == '1234567890', 'the published number has been mended'
        published['Contact Phone Number'] = '2095257564'
    assert ours == published, f'{name}: {ours} instead of {published}'
print(f'{len(names)} tables: JSON as published, but for one number that is wrong there')
PYTHON
}

for table in "$here"/data/*.csv; do
  name=$(basename "$table" .csv)
  message=$(definition "$table")
  cvt2 convert -c "$here" -m "$message" -f csv -t json -o "$out/$name.json" "$table" || { fail "$name: not converted"; continue; }
  cvt2 parse -c "$here" -m "$message" -f csv --all --json "$table" |
    cvt2 generate -c "$here" -m "$message" -t csv --out-framing none >"$out/$name.csv" || fail "$name: not written again"
  cmp "$table" "$out/$name.csv" || fail "$name: other bytes"
  say "$(printf '%-22s %3d bytes, and the same bytes back' "$name" "$(wc -c <"$table")")"
done
told=$(compare "$out" "$here/expected") || fail "other values than published"
say "$told"

exit "$failed"
