#!/usr/bin/env bash
# Checks what the library exports: the names of its export list and no other, each declared in a public header;
# every function of the headers is in the list; logInfo is the host's.
set -u
usage='usage: exports.sh LIBRARY EXPORT_LIST HEADER_FOLDER HEADER...'
library=${1:?$usage}
map=${2:?$usage}
dir=${3:?$usage}
shift 3
: "${1:?$usage}"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

# same WHAT FILE FILE: the two sorted lists are equal
same() {
  diff "$2" "$3" >"$work/diff" && return
  echo "$1 ('<' only there, '>' only here):"
  grep '^[<>]' "$work/diff"
  failed=1
}

sed -n '/global:/,/local:/s/^ *\([A-Za-z_][A-Za-z_0-9]*\);.*/\1/p' "$map" | sort >"$work/listed"
nm -D --defined-only "$library" | awk '{ print $NF }' | sort >"$work/exported"
same "$map differs from the exports of $library" "$work/listed" "$work/exported"

nm -D --undefined-only "$library" | awk '{ print $NF }' | grep -qx logInfo || {
  echo "$library does not leave logInfo to the host"
  failed=1
}

printf '#include "%s"\n' "$@" >"$work/declared.c"
{
  cat "$work/declared.c"
  echo 'unsigned long check[] = {'
  sed 's/.*/sizeof(\&&),/' "$work/listed"
  echo '};'
} >"$work/all.c"
gcc -std=c99 -Wall -Wextra -Werror -fsyntax-only -I "$dir" "$work/all.c" || {
  echo "an exported name is declared in no public header"
  failed=1
}

# the compiler's own list of the functions that it saw declared, by file
gcc -std=c99 -I "$dir" -aux-info "$work/prototypes" -S -o /dev/null "$work/declared.c" || failed=1
sed -n "s|^/\* $dir/[^ ]* \*/ extern [^(]*[ *]\([A-Za-z_][A-Za-z_0-9]*\) (.*|\1|p" "$work/prototypes" |
  sort -u >"$work/functions"
comm -13 "$work/listed" "$work/functions" >"$work/missing"
if [ -s "$work/missing" ]; then
  echo "declared in a public header, not exported:"
  cat "$work/missing"
  failed=1
fi

echo "$(wc -l <"$work/exported") exported names, $(wc -l <"$work/functions") functions declared"
[ "$(wc -l <"$work/functions")" -gt 100 ] && [ "$failed" -eq 0 ]
