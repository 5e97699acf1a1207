#!/usr/bin/env bash
# Writes the library's binary interface as abidw reads it from the debug information: the exported functions and
# variables and the types behind them, without lines and folders, so that the text changes with the interface only.
#
#   dump.sh LIBRARY
set -eu -o pipefail
library=${1:?usage: dump.sh LIBRARY}
source=$(cd "$(dirname "$0")/../.." && pwd)

abidw --exported-interfaces-only --type-id-style hash --no-write-default-sizes --no-show-locs --no-corpus-path \
  --no-comp-dir-path --no-elf-needed "$library" | sed "s|path='$source/|path='|"
