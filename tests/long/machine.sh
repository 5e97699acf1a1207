#!/usr/bin/env bash
# Says on what machine a figure is measured.
set -eu
processor=$(sed -n 's/^model name[^:]*: *//p' /proc/cpuinfo | head -n 1)
memory=$(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)
system=$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)
echo "$(nproc) x $processor, $memory, $system, $(uname -sr)"
