#!/usr/bin/env bash
# Says of which commit a figure is, as far as the report of the long test itself does not count.
set -eu
cd "$(dirname "$0")/../.."
changes=
[ -z "$(git status --porcelain --untracked-files=no -- . ':!tests/results.md')" ] || changes=' with changes'
echo "$(git rev-parse --short HEAD)$changes"
