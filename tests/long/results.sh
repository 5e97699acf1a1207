#!/usr/bin/env bash
# Writes the report of the long test anew: of a stage that the folder has, NAME.txt, what it left there; of another,
# what the report had.
#
#   results.sh REPORT FOLDER STAGE...
set -euo pipefail
report=${1:?usage: results.sh REPORT FOLDER STAGE...}
results=${2:?usage: results.sh REPORT FOLDER STAGE...}
shift 2

# row STAGE: its line of the report's first table.
row() {
  if [ -f "$results/$1.txt" ]; then
    IFS='|' read -r outcome commit ended seconds <"$results/$1.txt"
    echo "| [$1](#$1) | $outcome | $commit | $ended | $seconds |"
  else
    grep -F "| [$1](#$1) |" "$report" || echo "| $1 | not run | | | |"
  fi
}

# section STAGE: its figures.
section() {
  if [ -f "$results/$1.txt" ]; then
    printf '\n## %s\n\n' "$1"
    grep -q '^RESULT ' "$results/$1.txt" || {
      echo "No figures."
      return
    }
    printf '| | |\n|---|---|\n'
    sed -n 's/|/\\|/g; s/^RESULT \([^:]*\): *\(.*\)/| \1 | \2 |/p' "$results/$1.txt"
  else
    awk -v title="## $1" '/^## / { on = $0 == title; if (on) print "" } on && NF { print; if ($0 == title) print "" }' \
      "$report"
  fi
}

cat <<TXT
# Test results

Measured and written by \`./run test --long\`. [CONTRIBUTING.md](../CONTRIBUTING.md#grades) says what the stages are.

| stage | outcome | commit | ended | seconds |
|---|---|---|---|---:|
TXT
for stage in "$@"; do row "$stage"; done
for stage in "$@"; do section "$stage"; done
