#!/usr/bin/env bash
# Messages that another program sent and received, from its trace: every field as the trace shows it, the same bytes back.
#
#   demo.sh [--quiet]     the command cvt2 must be in the path
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
out=$(python3 -B "$here/check.py" "$here/data/iso-traces.xml")
[ "${1-}" = --quiet ] || printf '%s\n' "$out"
