#!/usr/bin/env bash
# The long test: every stage, or those named, each told in tests/results.md as soon as it ends. A stage that fails does
# not keep the others from running. With --minutes fuzzing ends after that time, and goes on in the next run.
#
#   long.sh [--minutes N] [STAGE...]
set -euo pipefail
cd "$(dirname "$0")/../.."

stages=(release debug aligned coverage gcc-o3 clang-o0 clang-o2 clang-o3 valgrind lint fuzz mutation)
results=build/results
fuzz_options=()

# run_stage NAME: runs it, keeps its output and tells its figures; 1 when it did not pass.
run_stage() {
  local outcome=passed begun=$SECONDS at code=0 options=()
  [ "$1" != fuzz ] || options=("${fuzz_options[@]}")
  at=$(tests/long/commit.sh)
  ./run stage "$1" "${options[@]}" </dev/null 2>&1 | tee "$results/$1.log" || code=$?
  case $code in
    0) ;;
    3) outcome=unfinished ;;
    *) outcome=FAILED ;;
  esac
  {
    echo "$outcome|$at|$(date '+%Y-%m-%d %H:%M')|$((SECONDS - begun))"
    echo "RESULT machine: $(tests/long/machine.sh)"
    grep -a '^RESULT ' "$results/$1.log" || :
  } >"$results/$1.txt"
  tests/long/results.sh tests/results.md "$results" "${stages[@]}" >"$results/report.md"
  mv "$results/report.md" tests/results.md
  [ "$outcome" = passed ]
}

fail() {
  echo "long.sh: $*" >&2
  exit 2
}

chosen=()
while [ $# -gt 0 ]; do
  if [ "$1" = --minutes ]; then
    [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || fail "--minutes: expected a number, found '${2:-}'"
    fuzz_options=(--minutes "$2")
    shift
  else
    grep -qxF -e "$1" < <(printf '%s\n' "${stages[@]}") || fail "expected --minutes or one of ${stages[*]}, found '$1'"
    chosen+=("$1")
  fi
  shift
done
[ ${#chosen[@]} -gt 0 ] || chosen=("${stages[@]}")

mkdir -p "$results"
rm -f "$results"/*.txt # what earlier runs measured stands in the report
failed=()
for stage in "${chosen[@]}"; do
  printf '\n==== %s\n' "$stage"
  run_stage "$stage" || failed+=("$stage")
done
[ ${#failed[@]} -eq 0 ] || {
  echo "long.sh: not passed: ${failed[*]}; what they wrote is in $results" >&2
  exit 1
}
