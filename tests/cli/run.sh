#!/usr/bin/env bash
# Runs one case of the command: a script beside which stand its expected results.
#
#   tests/cli/run.sh BUILD_DIR CASE           compare                 CASE: cases/NAME.sh
#   tests/cli/run.sh --rewrite BUILD_DIR CASE...   write what is expected anew; review it with git diff
#
#   cases/NAME.sh      the script: bash, in an empty directory of its own, with cvt2 in the PATH and a copy of
#                      the configuration tests/cli/config in CVT2_CONFIG
#   cases/NAME.stdout  .stderr  .exit   what it writes and its exit code; no file: nothing, nothing, 0
#
# The case's directory, the build directory, times and rates are written <DIR>, <BUILD>, <SECONDS>, <RATE>.
set -u

here=$(cd "$(dirname "$0")" && pwd)
rewrite=false
if [ "${1:-}" = --rewrite ]; then
  rewrite=true
  shift
fi
if [ $# -lt 2 ]; then
  sed -n '2,13s/^# \{0,1\}//p' "$0" >&2
  exit 2
fi
build=$(cd "$1" && pwd) || exit 2
shift

normalise() {
  sed -E "s#$work#<DIR>#g; s#$build#<BUILD>#g; s#[0-9.]+ s, [0-9]+ messages/s#<SECONDS> s, <RATE> messages/s#" "$1"
}

# expect KIND ACTUAL: compares with, or rewrites, cases/NAME.KIND
expect() {
  local expected=$here/cases/$name.$1
  if $rewrite; then
    if [ -s "$2" ]; then cp "$2" "$expected"; else rm -f "$expected"; fi
    return 0
  fi
  [ -e "$expected" ] || expected=/dev/null
  diff -u --label "expected $1" --label "actual $1" "$expected" "$2"
}

one_case() {
  name=$(basename "$1" .sh)
  work=$(mktemp -d) || exit 2
  trap 'rm -rf "$work"' EXIT
  mkdir "$work/cwd" "$work/result"
  cp -r "$here/config" "$work/config"
  sed -i "s#@PLUGINS@#$build/lib#" "$work/config/All/root.xml"
  (
    cd "$work/cwd" || exit 2
    export PATH="$build/bin:$PATH" CVT2_CONFIG="$work/config" LC_ALL=C.UTF-8
    bash "$here/cases/$name.sh" >"$work/out" 2>"$work/err" </dev/null
    code=$?
    [ "$code" = 0 ] || echo "$code" >"$work/result/exit"
  )
  touch "$work/result/exit"
  normalise "$work/out" >"$work/result/stdout"
  normalise "$work/err" >"$work/result/stderr"
  local ok=0
  for kind in exit stdout stderr; do
    expect "$kind" "$work/result/$kind" || ok=1
  done
  rm -rf "$work"
  return $ok
}

failed=0
for case in "$@"; do
  one_case "$case" || failed=1
done
exit $failed
