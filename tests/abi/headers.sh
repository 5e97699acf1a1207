#!/usr/bin/env bash
# Compiles each public header alone, as C99 and as C++17, with every compiler of the machine: a plug-in or host
# may be written in either language and includes what it needs in any order.
set -u
usage='usage: headers.sh HEADER_FOLDER HEADER...'
dir=${1:?$usage}
shift
: "${1:?$usage}"

warnings='-pedantic -Wall -Wextra -Wshadow -Wconversion -Werror'
checked=0
failed=0

# check COMPILER LANGUAGE STANDARD HEADER
check() {
  checked=$((checked + 1))
  # twice: the second time the include guard must hold
  printf '#include "%s"\n#include "%s"\n' "$4" "$4" |
    "$1" -x "$2" -std="$3" $warnings -fsyntax-only -I "$dir" - && return
  echo "$4 does not compile alone: $1 -std=$3"
  failed=1
}

for compiler in gcc clang; do
  command -v "$compiler" >/dev/null || continue
  for header in "$@"; do check "$compiler" c c99 "$header"; done
done
for compiler in g++ clang++; do
  command -v "$compiler" >/dev/null || continue
  for header in "$@"; do check "$compiler" c++ c++17 "$header"; done
done
echo "$checked compilations of $# headers"
[ "$checked" -gt "$#" ] && [ "$failed" -eq 0 ]
