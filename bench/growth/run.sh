#!/usr/bin/env bash
# Draws how cost grows: a file of figures and a picture for each curve.
#
#   bench/growth/run.sh PROGRAM FOLDER [CURVE...]    all curves without names
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
program=${1:?usage: run.sh PROGRAM FOLDER [CURVE...]}
folder=${2:?usage: run.sh PROGRAM FOLDER [CURVE...]}
shift 2

wanted() { [ $# -eq 1 ] || [[ " ${*:2} " == *" $1 "* ]]; }

# Bytes for one more of what a curve counts: from its first point to its last.
each_takes() {
  awk -F, -v what="$2" 'NR == 2 { size = $1; heap = $7 } END { printf "%s,%.0f\n", what, (1024 * ($7 - heap)) / ($1 - size) }' \
    "$folder/$1.csv"
}

memory() {
  echo what,bytes
  each_takes definitions "a definition of ten fields"
  each_takes entries "a definition with a converter of ten rules and an identification entry"
  each_takes converters "a converter of ten rules"
  each_takes fields "a field on both sides with its rule"
  each_takes rules "a rule"
  awk -F, 'NR == 2 { printf "a live message of ten fields: read,%d\na live message of ten fields: made of it,%d\n", $9, $10 }' \
    "$folder/definitions.csv"
}

command -v gnuplot >/dev/null || echo "no pictures: gnuplot is not installed"
mkdir -p "$folder"
while IFS=, read -r curve sizes what; do
  wanted "$curve" "$@" || continue
  echo "$curve: $what"
  "$program" --head >"$folder/$curve.csv"
  for size in $sizes; do "$program" "$curve" "$size" | tee -a "$folder/$curve.csv"; done
  command -v gnuplot >/dev/null || continue
  gnuplot -e "curve='$curve'; what='$what'; folder='$folder'" "$here/curve.gp"
done < <("$program")
[ $# -gt 0 ] || memory | tee "$folder/memory.csv"
