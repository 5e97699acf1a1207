#!/usr/bin/env bash
# Writes the report of the long test from what its stages left.
#
#   results.sh RESULTS_FOLDER STAGE...
set -eu
results=${1:?usage: results.sh RESULTS_FOLDER STAGE...}
shift

processor=$(sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1)
memory=$(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)
system=$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)

cat <<TXT
# Test results

Measured and written by \`./run test --long\`. [CONTRIBUTING.md](../CONTRIBUTING.md#grades) says what the stages are.

Written $(date '+%Y-%m-%d %H:%M') on $system, $(uname -sr), $(nproc) x $processor, $memory.

| stage | outcome | commit | ended | seconds |
|---|---|---|---|---:|
TXT
for stage in "$@"; do
  if [ -f "$results/$stage.txt" ]; then
    IFS='|' read -r outcome commit ended seconds <"$results/$stage.txt"
    echo "| [$stage](#$stage) | $outcome | $commit | $ended | $seconds |"
  else
    echo "| $stage | not run | | | |"
  fi
done

for stage in "$@"; do
  [ -f "$results/$stage.txt" ] || continue
  printf '\n## %s\n\n' "$stage"
  grep -q '^RESULT ' "$results/$stage.txt" || {
    echo "No figures."
    continue
  }
  printf '| | |\n|---|---|\n'
  sed -n 's/|/\\|/g; s/^RESULT \([^:]*\): *\(.*\)/| \1 | \2 |/p' "$results/$stage.txt"
done
