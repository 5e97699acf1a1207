#!/usr/bin/env bash
# Card messages with chip data into JSON and back: the published JSON comes out as an equal tree, and the published bytes
# come back.
#
#   demo.sh [--quiet]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
quiet=
[ "${1-}" = --quiet ] && quiet=1
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
failed=0

say() { [ -n "$quiet" ] || printf '%s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }
bytes() { python3 -c 'import sys; sys.stdout.buffer.write(bytes.fromhex(sys.stdin.read()))' <"$1"; }
to_json() { cvt2 convert -c "$here" -m CardIso -f iso -t json -o "$2" "$1" 2>"$out/notes" || fail "$1: $(cat "$out/notes")"; }
to_iso() { cvt2 convert -c "$here" -m CardJson -f json -t iso -o "$2" "$1" 2>"$out/notes" || fail "$1: $(cat "$out/notes")"; }

# Whether two JSON texts are equal as trees: the order of members does not matter.
same_tree() { python3 -c 'import json, sys; a, b = (json.load(open(name)) for name in sys.argv[1:]); sys.exit(a != b)' "$1" "$2"; }

for hex in "$here"/data/*.hex; do
  name=$(basename "$hex" .hex)
  bytes "$hex" >"$out/$name.iso"
  to_json "$out/$name.iso" "$out/$name.json"
  same_tree "$here/data/$name.json" "$out/$name.json" || fail "$name: not the published JSON"
  to_iso "$out/$name.json" "$out/$name.back"
  cmp -s "$out/$name.iso" "$out/$name.back" || fail "$name: not the bytes that it was"

  # From the published JSON. That of 0100-auth-request lists its tags sorted; the message had them in another order.
  to_iso "$here/data/$name.json" "$out/$name.made"
  if [ "$name" = 0100-auth-request ]; then
    note='its JSON in another order: the same fields and tags'
    to_json "$out/$name.made" "$out/$name.again"
    same_tree "$here/data/$name.json" "$out/$name.again" || fail "$name: not the published JSON again"
    [ "$(wc -c <"$out/$name.made")" = "$(wc -c <"$out/$name.iso")" ] || fail "$name: another length"
  else
    note='the same bytes from the published JSON'
    cmp -s "$out/$name.iso" "$out/$name.made" || fail "$name: not the published bytes"
  fi
  say "$(printf '%-31s %3d bytes, %2d tags, the same JSON; %s' "$name" "$(wc -c <"$out/$name.iso")" \
    "$(grep -c '"55\.' "$out/$name.json" || true)" "$note")"
done
exit $failed
