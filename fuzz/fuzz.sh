#!/usr/bin/env bash
# fuzz.sh BUILD [--seconds N | --whole] [--minutes N] [--resume] [--keep] [TARGET...]: fuzzes the targets of a build with
# libFuzzer, all without a name, as many at a time as there are processors.
#
# Without --seconds a target runs until it has had 10 million inputs, or found nothing new for 10 minutes; with --whole
# it always has 10 million. --minutes ends all of it after that time; --resume goes on then: of a target that came to
# its end with these sources, in this build or in the report of the long test, only the result is told again. --keep
# puts a few inputs that cover the edges that were covered into corpus/.
#
# Ends with 1 when an input was found that crashes, leaks, takes more than a second or more than 512 MB; such inputs
# stay in BUILD/fuzz/found. Otherwise with 3 when a target has not come to its end.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
project=$(dirname "$here")

most_executions=10000000
most_idle_seconds=600
poll_seconds=1
kept_bytes=196608 # of each target's corpus

# What every target is made of, beside its own file.
sources=(CMakeLists.txt CMakePresets.json cmake src examples fuzz/CMakeLists.txt fuzz/support fuzz/dictionaries
  'tests/support/config_tree.*' 'tests/support/toy_config.*' ':!*.md' ':!*.sh')

# Formats, as targets name them and as their folders of src/cvt/plug begin.
formats=(csv example fix iso json xml)

fail() {
  echo "fuzz.sh: $*" >&2
  exit 2
}

# number OPTION VALUE
number() { [[ $2 =~ ^[1-9][0-9]*$ ]] || fail "$1: expected a number, found '$2'"; }

build=$(realpath "${1:?usage: fuzz.sh BUILD [--seconds N | --whole] [--minutes N] [--resume] [--keep] [TARGET...]}")
shift
[ -f "$build/fuzz/targets.txt" ] || fail "$build holds no fuzz targets; build it with the preset fuzz"
seconds=0
whole=false
deadline=
keep=false
resume=false
names=()
while [ $# -gt 0 ]; do
  case $1 in
    --seconds)
      number "$1" "${2:-}"
      seconds=$2
      shift
      ;;
    --minutes)
      number "$1" "${2:-}"
      deadline=$((SECONDS + 60 * $2))
      shift
      ;;
    --whole) whole=true ;;
    --resume) resume=true ;;
    --keep) keep=true ;;
    -*) fail "expected --seconds, --whole, --minutes, --resume, --keep or the name of a target, found '$1'" ;;
    *) names+=("$1") ;;
  esac
  shift
done
[ ${#names[@]} -gt 0 ] || mapfile -t names < <(cut -d'|' -f1 "$build/fuzz/targets.txt")

found=$build/fuzz/found
work=$build/fuzz/work
mkdir -p "$found" "$work"
# stop: ends what still runs, before what it needs is gone.
stop() {
  local running
  mapfile -t running < <(jobs -p)
  [ ${#running[@]} -eq 0 ] || kill "${running[@]}" 2>/dev/null || :
  wait
  rm -rf "$scratch"
}
# Configuration trees are written for each input: in memory where that can be.
scratch=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")" cvt2-fuzz-XXXXXX)
trap stop EXIT
export TMPDIR=$scratch
export LD_LIBRARY_PATH=$build/lib
# Short stacks and a small quarantine: a third more inputs a second. An input that is found is looked at without these.
export ASAN_OPTIONS=quarantine_size_mb=2:malloc_context_size=2:detect_odr_violation=0

# edges LOG: how many edges of the program were covered, after the first inputs and at the end.
edges() { awk '/ cov: / { for (i = 1; i < NF; i++) if ($i == "cov:") n = $(i + 1); if ($2 == "INITED") f = n }
  END { print f + 0, n + 0 }' "$1"; }
# last_new LOG: the execution that last covered a new edge.
last_new() { awk '/ cov: / { for (i = 1; i < NF; i++)
    if ($i == "cov:" && $(i + 1) + 0 > n) { n = $(i + 1) + 0; at = $1 } }
  END { print substr(at, 2) + 0 }' "$1"; }
stat_of() { awk -v name="stat::$1:" '$1 == name { n = $2 } END { print n + 0 }' "$2"; }

# run_once TARGET RUNS LENGTH DICTIONARY SEED...: one run of libFuzzer into the log.
run_once() {
  local target=$1 runs=$2 length=$3 dictionary=$4 seed
  shift 4
  local options=(-runs="$runs" -max_len="$length" -timeout=1 -rss_limit_mb=512 -print_final_stats=1
    -artifact_prefix="$found/$target-")
  [ "$seconds" -eq 0 ] || options+=(-max_total_time="$seconds")
  [ -z "$dictionary" ] || options+=(-dict="$here/dictionaries/$dictionary.dict")
  mkdir -p "$work/$target" "$here/corpus/$target"
  local folders=("$work/$target" "$here/corpus/$target")
  for seed in "$@"; do folders+=("$project/$seed"); done
  : >"$work/$target.log"
  nice "$build/bin/fuzz_$target" "${options[@]}" "${folders[@]}" >"$work/$target.log" 2>&1 &
  local process=$!
  trap 'kill -KILL "$process"; wait "$process" 2>/dev/null || exit 143' TERM
  watch "$process" "$work/$target.log"
  wait "$process"
}

# watch PID LOG: until it ends; asks it to when it found nothing new for long enough, or the time is up. Sets idle, the
# seconds since it last found something.
watch() {
  local now most=0 since=$SECONDS
  while kill -0 "$1" 2>/dev/null; do
    sleep "$poll_seconds"
    read -r _ now < <(edges "$2")
    if [ "$now" -gt "$most" ]; then
      most=$now
      since=$SECONDS
    fi
    idle=$((SECONDS - since))
    [ "$most" -gt 0 ] || continue
    if is_late || is_idle; then kill -USR1 "$1" 2>/dev/null || :; fi
  done
}
is_late() { [ -n "$deadline" ] && [ "$SECONDS" -ge "$deadline" ]; }
is_idle() { [ "$seconds" -eq 0 ] && ! $whole && [ "$idle" -ge "$most_idle_seconds" ]; }

# only_waited TARGET: whether all that was found are inputs that took long because the machine was busy. These are
# removed; only an input that takes more than a second again does so by itself.
only_waited() {
  local input
  for input in "$found/$1"-*; do
    [[ $input == */"$1"-@(timeout|slow-unit)-* ]] || return 1
    "$build/bin/fuzz_$1" -timeout=1 "$input" >"$work/$1.again.log" 2>&1 || return 1
    rm "$input"
  done
}

# ended TARGET: its result, if it came to its end with these sources.
ended() {
  local line
  while read -r line; do
    if has_sources "$1" "${line##* }"; then
      echo "$line"
      return
    fi
  done < <(
    [ ! -f "$work/$1.result" ] || cat "$work/$1.result"
    sed -n "s/^| \(fuzz\.$1\) | \(.*\) |\$/RESULT \1: \2/p" "$project/tests/results.md"
  )
  return 1
}
# has_sources TARGET COMMIT
has_sources() {
  local own=("fuzz/$1.cpp")
  [ -f "$project/${own[0]}" ] || own=('fuzz/*_definition.cpp')
  [[ $1 == tool_* ]] || own+=(':!src/cvt/tool')
  local format
  for format in "${formats[@]}"; do
    runs_format "$1" "$format" || own+=(":!src/cvt/plug/$format*")
  done
  [[ $2 =~ ^[0-9a-f]{7,}$ ]] && git -C "$project" diff --quiet "$2" -- "${sources[@]}" "${own[@]}" 2>/dev/null
}

# runs_format TARGET FORMAT: a target that is named after a format runs no code of another one, and one without a
# configuration that of none. The command's are named after what the command reads.
runs_format() {
  if [[ $1 != tool_* && _$1_ =~ _($(IFS='|' && echo "${formats[*]}"))_ ]]; then
    [ "${BASH_REMATCH[1]}" = "$2" ]
  else
    [ ! -f "$project/fuzz/$1.cpp" ] || grep -q Configuration "$project/fuzz/$1.cpp"
  fi
}

# fuzz TARGET LENGTH DICTIONARY SEED...
fuzz() {
  local target=$1 executions=0 passed=0 first=-1 last=0 started code before after idle outcome
  shift
  local log=$work/$target.log
  while :; do
    started=$SECONDS
    code=0
    run_once "$target" $((most_executions - executions)) "$@" || code=$?
    passed=$((passed + SECONDS - started))
    read -r before after < <(edges "$log")
    [ "$after" -le "$before" ] || last=$((executions + $(last_new "$log")))
    executions=$((executions + $(stat_of number_of_executed_units "$log")))
    [ "$first" -ge 0 ] || first=$before
    [ "$code" -ne 0 ] && only_waited "$target" || break
    code=0
    [ "$executions" -lt "$most_executions" ] || break
  done
  if [ "$code" -ne 0 ]; then
    outcome="FOUND, see $log"
    code=1
  elif [ "$executions" -ge "$most_executions" ] || is_idle; then
    outcome="nothing found at $("$project/tests/long/commit.sh")"
  else
    outcome="nothing found so far"
    [ "$seconds" -gt 0 ] || code=3
  fi
  echo "RESULT fuzz.$target: $executions executions in $passed s, edges $first -> $after," \
    "the last new one at execution $last, $idle s before the end, at most $(stat_of slowest_unit_time_sec "$log") s" \
    "and $(stat_of peak_rss_mb "$log") MB, $outcome" | tee "$work/$target.result"
  return "$code"
}

# minimise TARGET LENGTH DICTIONARY SEED...: the inputs that are kept, one for each edge at least, the smallest first as
# far as they fit. Those of the project's folders are replayed from there.
minimise() {
  local target=$1 length=$2 seed size file total=0
  shift 3
  local fresh=$scratch/corpus-$target folders=("$work/$target" "$here/corpus/$target")
  mkdir "$fresh"
  for seed in "$@"; do
    folders+=("$project/$seed")
    find "$project/$seed" -maxdepth 1 -type f -exec sha1sum {} + >>"$fresh.seeds"
  done
  "$build/bin/fuzz_$target" -set_cover_merge=1 -use_counters=0 -max_len="$length" -rss_limit_mb=512 "$fresh" "${folders[@]}" >/dev/null 2>&1
  find "$here/corpus/$target" -regextype egrep -regex '.*/[0-9a-f]{12}' -delete
  while read -r size file; do
    ! grep -q "^$(sha1sum <"$file" | cut -c1-40)" "$fresh.seeds" 2>/dev/null || continue
    total=$((total + size))
    [ "$total" -le "$kept_bytes" ] || break
    mv "$file" "$here/corpus/$target/$(sha1sum <"$file" | cut -c1-12)"
  done < <(find "$fresh" -type f -printf '%s %p\n' | sort -n)
  rm -rf "$fresh" "$fresh.seeds"
}

# run_target TARGET
run_target() {
  local length dictionary seeds code=0
  if $resume && ended "$1"; then return; fi
  if is_late; then
    echo "RESULT fuzz.$1: not begun"
    return 3
  fi
  IFS='|' read -r _ length dictionary seeds < <(grep "^$1|" "$build/fuzz/targets.txt")
  # shellcheck disable=SC2086 # the seeds are words
  fuzz "$1" "$length" "$dictionary" $seeds || code=$?
  # shellcheck disable=SC2086
  if $keep; then minimise "$1" "$length" "$dictionary" $seeds; fi
  return $code
}

# finish: waits for one target. What is found counts more than what is not at its end.
finish() {
  local code=0
  wait -n || code=$?
  [ "$code" -eq 0 ] || [ "$status" -eq 1 ] || status=$code
  running=$((running - 1))
}

for name in "${names[@]}"; do
  grep -q "^$name|" "$build/fuzz/targets.txt" ||
    fail "expected one of $(cut -d'|' -f1 "$build/fuzz/targets.txt" | paste -sd' '), found '$name'"
done
status=0
running=0
for name in "${names[@]}"; do
  [ "$running" -lt "$(nproc)" ] || finish
  run_target "$name" &
  running=$((running + 1))
done
while [ "$running" -gt 0 ]; do finish; done
exit $status
