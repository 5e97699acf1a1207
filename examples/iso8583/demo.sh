#!/usr/bin/env bash
# One real reversal as ISO 8583, JSON and XML: all six conversions, checked by other tools against the published files.
#
#   demo.sh [--quiet]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
quiet=
[ "${1-}" = --quiet ] && quiet=1
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
failed=0
good=0

say() { [ -n "$quiet" ] || printf '%s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }

published() { echo "$here/data/iso_reversal_message.${1/iso/dat}"; }
name() { case $1 in iso) echo IsoReversal ;; json) echo JsonReversal ;; xml) echo XmlReversal ;; esac; }

# same FORMAT FILE: whether it is the published file: ISO 8583 byte for byte, JSON and XML as trees
same() {
  case $1 in
    iso) cmp -s "$(published iso)" "$2" ;;
    *) python3 "$here/check.py" "$1" "$(published "$1")" "$2" ;;
  esac
}

say "== A reversal of 263 bytes, ISO 8583:1987: $(head -c 60 "$(published iso)")..."
for from in iso json xml; do
  for to in iso json xml; do
    [ $from != $to ] || continue
    cvt2 convert -c "$here" -m "$(name $from)" -f $from -t $to -o "$out/$from.$to" "$(published $from)" 2>"$out/notes" ||
      { fail "$from to $to: $(cat "$out/notes")"; continue; }
    same $to "$out/$from.$to" || { fail "$from to $to: not the published file"; continue; }
    good=$((good + 1))
    say "$(printf '   %-4s -> %-4s  %4d bytes, %s' $from $to "$(wc -c <"$out/$from.$to")" \
      "$([ $to = iso ] && echo 'the same bytes' || echo 'the same tree')")"
  done
done

[ $failed = 0 ] || exit 1
say "== $good of 6 conversions give the published message"
