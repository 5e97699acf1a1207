#!/usr/bin/env bash
# Runs a share of the long life under valgrind. At its end nothing may be left but what leaks.supp names.
#
#   tests/life/valgrind.sh PROGRAM
set -u

skip() {
  echo "skipped: $*"
  exit 77
}

here=$(cd "$(dirname "$0")" && pwd)
command -v valgrind >/dev/null || skip "valgrind is not installed"
valgrind --quiet /bin/true || skip "valgrind does not start; the Debian package libc6-dbg may be missing"
grep -q __asan_init "$1" && skip "the program is built with a sanitizer that does not run under valgrind"

export CVT2_LIFE_SHARE=40
exec valgrind --leak-check=full --show-leak-kinds=all --errors-for-leak-kinds=all --error-exitcode=99 \
  --num-callers=40 --show-error-list=yes --suppressions="$here/leaks.supp" "$1"
