#!/usr/bin/env bash
# What a message costs must not depend on what else is configured: counts the instructions of messages in a small and
# in a large configuration.
#
#   bench/growth/flat.sh PROGRAM
set -euo pipefail
program=${1:?usage: flat.sh PROGRAM}
small=30 large=100 messages=300 percent=2

skip() {
  echo "skipped: $*"
  exit 77
}
command -v valgrind >/dev/null || skip "valgrind is not installed"
valgrind --quiet /bin/true || skip "valgrind does not start; the Debian package libc6-dbg may be missing"
grep -q __asan_init "$program" && skip "the program is built with a sanitizer that does not run under valgrind"

out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# count SIZE: instructions of all messages, those of the start apart.
count() {
  valgrind --tool=callgrind --toggle-collect='growth::Traffic::passAll(long)' \
    --callgrind-out-file="$out/$1" "$program" everything "$1" --messages "$messages" >"$out/log" 2>&1 ||
    { cat "$out/log" >&2; return 1; }
  awk '$1 == "summary:" || $1 == "totals:" { n = $2 } END { print n + 0 }' "$out/$1"
}

few=$(count "$small")
many=$(count "$large")
echo "RESULT growth: $((few / messages)) instructions a message among $small others of each kind, $((many / messages)) among $large"
[ "$few" -gt $((messages * 1000)) ] || { echo "nothing was counted" >&2; exit 1; }
if [ $((many * 100)) -gt $((few * (100 + percent))) ]; then
  echo "more than $percent % apart: something walks a list for each message; 'growth' has the curves that say which" >&2
  exit 1
fi
