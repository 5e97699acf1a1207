#!/usr/bin/env bash
# The long test: every stage, or those named, then tests/results.md with what they measured. A stage that fails does
# not keep the others from running.
#
#   long.sh [STAGE...]
set -euo pipefail
cd "$(dirname "$0")/.."

stages=(release debug aligned coverage gcc-o3 clang-o0 clang-o2 clang-o3 valgrind lint fuzz mutation)
results=build/results

commit() {
  local changes=
  [ -z "$(git status --porcelain --untracked-files=no -- . ':!tests/results.md')" ] || changes=' with changes'
  echo "$(git rev-parse --short HEAD)$changes"
}

# run_stage NAME: runs it and keeps its output and its figures; 1 when it failed.
run_stage() {
  local outcome=passed begun=$SECONDS at
  at=$(commit)
  ./run stage "$1" </dev/null 2>&1 | tee "$results/$1.log" || outcome=FAILED
  {
    echo "$outcome|$at|$(date '+%Y-%m-%d %H:%M')|$((SECONDS - begun))"
    grep -a '^RESULT ' "$results/$1.log" || :
  } >"$results/$1.txt"
  [ "$outcome" = passed ]
}

mkdir -p "$results"
failed=()
[ $# -gt 0 ] || set -- "${stages[@]}"
for stage in "$@"; do
  printf '\n==== %s\n' "$stage"
  run_stage "$stage" || failed+=("$stage")
done
tests/results.sh "$results" "${stages[@]}" >tests/results.md
[ ${#failed[@]} -eq 0 ] || {
  echo "long.sh: failed: ${failed[*]}; what they wrote is in $results" >&2
  exit 1
}
