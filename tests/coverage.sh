#!/usr/bin/env bash
# Which lines and branches of the library the last run of a coverage build's tests went through. Branches that only an
# exception takes, and those that the compiler made and nothing reaches, do not count. Too few are a failure.
#
#   coverage.sh BUILD_FOLDER [--list]      --list: every line that was not run, or not in each direction
set -euo pipefail
build=$(realpath "${1:?usage: coverage.sh BUILD_FOLDER [--list]}")
cd "$(dirname "$0")/.."

least_lines=95
least_branches=90
options=(--root . --object-directory "$build" --filter 'src/cvt/cvt2/' --exclude-throw-branches
  --exclude-unreachable-branches)

if [ "${2:-}" = --list ]; then
  gcovr "${options[@]}" --json - "$build/src/cvt/cvt2" | tests/uncovered.py
  exit
fi
# a part of the summary as a figure
figure() { sed -n "s/^$1: \(.*\)% (\(.*\) out of \(.*\))/RESULT $1: \1 % (\2 of \3), at least $2/p"; }
code=0
report=$(mktemp -d)  # not /dev/null: gcovr removes the file first, to see whether it may
trap 'rm -rf "$report"' EXIT
summary=$(gcovr "${options[@]}" --output "$report/text" --print-summary --fail-under-line $least_lines \
  --fail-under-branch $least_branches "$build/src/cvt/cvt2") || code=$?
figure lines $least_lines <<<"$summary"
figure branches $least_branches <<<"$summary"
exit $code
