#!/usr/bin/env bash
# A module converts through the library's table; what it writes must be what the command writes, byte for byte.
#
#   demo.sh LIBRARY MODULE     the command cvt2 and manager_host must be in the path
set -euo pipefail
library=${1:?usage: demo.sh LIBRARY MODULE} module=${2:?usage: demo.sh LIBRARY MODULE}
nacha=$(cd "$(dirname "$0")/../nacha" && pwd)
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
failed=0

fail() { printf 'FAILED: %s\n' "$*" >&2; failed=1; }

# host FILE [LIBRARY MODULE]
host() { manager_host "${2-$library}" "${3-$module}" "$nacha" "$1"; }

# refused WHAT LOG_TEXT FILE [LIBRARY MODULE]: the host fails, writes nothing, and the log says why
refused() {
  if host "${@:3}" >"$out/document" 2>"$out/log"; then fail "$1: not refused"; fi
  [ ! -s "$out/document" ] || fail "$1: something was written"
  grep -qF -- "$2" "$out/log" || fail "$1: the log does not say '$2': $(cat "$out/log")"
}

for file in "$nacha"/data/*.ach; do
  name=$(basename "$file")
  host "$file" >"$out/document" || { fail "$name: not converted"; continue; }
  cvt2 convert -c "$nacha" -m NachaFile -f nacha -t pain -o "$out/expected" "$file"
  cmp "$out/document" "$out/expected" || fail "$name: the module's document differs"
  printf '%-32s %6d bytes of XML: as the command writes them\n' "$name" "$(wc -c <"$out/document")"
done

# Library and module are loaded and unloaded for each.
manager_host "$library" "$module" "$nacha" "$nacha"/data/*.ach >"$out/document" || fail "all files: not converted"
for file in "$nacha"/data/*.ach; do host "$file"; done | cmp - "$out/document" || fail "all files: another document"

good=$nacha/data/iat-debit.ach
refused "a damaged file" "Msg[NachaFile]" "$nacha/data/bad/1qFormatCodeIncorrect.txt"
refused "no library" "/no/such/library.so" "$good" /no/such/library.so "$module"
refused "no module" "/no/such/module.so" "$good" "$library" /no/such/module.so
exit "$failed"
