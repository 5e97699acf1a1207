#!/usr/bin/env bash
# clang-tidy and cppcheck over the sources, all but the tests' own assertions. A finding is a failure; what is left out
# stands with its reason in .clang-tidy and .cppcheck-suppressions.
#
#   lint.sh BUILD_FOLDER     whose compile_commands.json says how a file is compiled
set -euo pipefail
build=$(realpath "${1:?usage: lint.sh BUILD_FOLDER}")
cd "$(dirname "$0")/.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
git ls-files src fuzz tests examples | grep -E '\.(c|cpp)$' | grep -v '_test\.cpp$' >"$work/all"
while read -r file; do
  grep -q "\"file\": \"$PWD/$file\"" "$build/compile_commands.json" && echo "$file"
done <"$work/all" >"$work/files"

code=0
echo "clang-tidy over $(wc -l <"$work/files") files"
xargs -P "$(nproc)" -n 1 clang-tidy -p "$build" --quiet --warnings-as-errors='*' <"$work/files" 2>"$work/noise" |
  tee "$work/tidy" || code=1
tidy=$(grep -cE ': (warning|error): ' "$work/tidy" || :)

echo "cppcheck over src"
includes=()
for folder in src/cvt/cvt2 src/cvt/plug src/version src/framework/{velutil,vel_dbs,function_plug_ctl}; do
  includes+=(-I "$folder")
done
cppcheck -j "$(nproc)" --quiet --std=c++20 --library=posix --enable=warning,style,performance,portability \
  --inline-suppr --suppressions-list=.cppcheck-suppressions --error-exitcode=1 '-DElfW(type)=Elf64_##type' \
  --template='{file}:{line}: {severity}: {message} [{id}]' "${includes[@]}" src 2>&1 |
  tee "$work/cppcheck" || code=1

echo "RESULT clang-tidy: $tidy findings in $(wc -l <"$work/files") files"
echo "RESULT cppcheck: $(grep -c . "$work/cppcheck" || :) findings in $(git ls-files src | grep -cE '\.(c|cpp|h)$') files"
exit $code
