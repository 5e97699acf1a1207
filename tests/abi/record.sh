#!/usr/bin/env bash
# Records the library's binary interface, once a release: libcvt2.abi is what later builds are compared with.
#
#   record.sh [LIBRARY]     without one: the release build's, built by g++
set -eu -o pipefail
here=$(cd "$(dirname "$0")" && pwd)
library=${1:-$here/../../build/release/lib/libcvt2.so}
"$here/dump.sh" "$library" >"$here/libcvt2.abi.new"
mv "$here/libcvt2.abi.new" "$here/libcvt2.abi"
echo "recorded $here/libcvt2.abi; git diff shows what changed"
