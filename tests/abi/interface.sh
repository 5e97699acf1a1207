#!/usr/bin/env bash
# Compares the library's binary interface with the recorded one.
set -u
usage='usage: interface.sh LIBRARY'
library=${1:?$usage}
here=$(cd "$(dirname "$0")" && pwd)

skip() {
  echo "skipped: $*"
  exit 77
}
command -v abidiff >/dev/null || skip "abidiff is not installed (Debian package abigail-tools)"
readelf -S "$library" | grep -q '\.debug_info' || skip "$library has no debug information"
nm -D "$library" | grep -q __asan && skip "a sanitizer puts room around the variables of $library"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$here/dump.sh" "$library" >"$work/now.abi" || exit 1
abidiff "$here/libcvt2.abi" "$work/now.abi" && exit 0
cat <<TXT

The binary interface of $library is not the recorded one: see above.
Programs that were built against the library call it without being compiled anew.
- A function, variable, record or field is gone or has another type, size or place: they break. Take the change back.
- Something was added and nothing else: they go on working. Record the interface with the change,
  tests/abi/record.sh LIBRARY, and say it in CHANGELOG.md.
TXT
exit 1
