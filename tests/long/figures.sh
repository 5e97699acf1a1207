#!/usr/bin/env bash
# Says in RESULT lines what the last run of ctest in a build found: how many tests, and what long tests measured.
#
#   figures.sh BUILD_FOLDER
set -eu
build=${1:?usage: figures.sh BUILD_FOLDER}
junit=$build/Testing/junit.xml
log=$build/Testing/Temporary/LastTest.log

# of NAME: an attribute of the whole run
of() { sed -n '/<testsuite /,/>/s/.*[ \t]'"$1"'="\([^"]*\)".*/\1/p' "$junit" | head -n 1; }

compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$build/CMakeCache.txt")
echo "RESULT compiler: $("$compiler" --version | head -n 1)"
echo "RESULT tests: $(of tests) run, $(of failures) failed, $(of skipped) skipped, $(of time) seconds"
skipped=$(sed -n 's/.*<testcase name="\([^"]*\)".* status="notrun".*/\1/p' "$junit" | paste -sd ' ')
[ -z "$skipped" ] || echo "RESULT skipped tests: $skipped"
# Of what a short and a long test measured, the long one.
grep -a '^RESULT ' "$log" | sort -u | awk -F ': ' '
  !($1 in most) || $2 + 0 > most[$1] { most[$1] = $2 + 0; line[$1] = $0 }
  END { for (name in line) print line[name] }' | sort || :
