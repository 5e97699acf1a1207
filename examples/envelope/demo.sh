#!/usr/bin/env bash
# Lines whose first letters say their type, into XML and back, byte for byte; unknown types are refused.
#
#   demo.sh [--quiet]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
quiet=
[ "${1-}" = --quiet ] && quiet=1
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
failed=0

say() { [ -n "$quiet" ] || cat "$@"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }

# to FORMAT FROM INPUT OUTPUT
to() { cvt2 convert -c "$here" -f "$2" -t "$1" --framing line -o "$4" "$3" 2>"$out/notes" || fail "$(cat "$out/notes")"; }

to xml line "$here/data/day.txt" "$out/day.xml"
cmp "$here/expected/day.xml" "$out/day.xml" || fail "not the expected XML"
say "$out/day.xml"
to line xml "$out/day.xml" "$out/day.txt"
cmp "$here/data/day.txt" "$out/day.txt" || fail "not the lines it came from"
say "$out/day.txt"

for line in XYZ123 PA ''; do
  status=0
  printf '%s\n' "$line" | cvt2 convert -c "$here" -f line -t xml --framing line >"$out/none" 2>"$out/error" || status=$?
  [ "$status" = 65 ] && [ ! -s "$out/none" ] || fail "'$line': exit status $status, $(wc -c <"$out/none") bytes"
  grep -q "Msg \[Line$(printf %.3s "$line")\] get define info err" "$out/error" || fail "'$line': $(cat "$out/error")"
done

exit "$failed"
