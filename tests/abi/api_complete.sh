#!/usr/bin/env bash
# Checks that the C program refers to every name of the library's export list.
set -u
usage='usage: api_complete.sh PROGRAM EXPORT_LIST'
program=${1:?$usage}
map=${2:?$usage}

names() { sed -n '/global:/,/local:/s/^ *\([A-Za-z_][A-Za-z_0-9]*\);.*/\1/p' "$map" | sort; }
missing=$(comm -23 <(names) <(nm -D "$program" | awk '{ print $NF }' | sort))
if [ -n "$missing" ]; then
  echo "exported, but not used by api_test.c: add a call of each"
  echo "$missing"
  exit 1
fi
echo "$(names | wc -l) exported names, all of them used"
[ "$(names | wc -l)" -gt 200 ]
