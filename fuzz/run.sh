#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs every fuzz target that was built, each for a bounded time, starting from its seeds. What a run finds is kept
# under the build directory; the seeds in the source tree stay as they are. Stops at the first target that fails and
# says where the offending input lies.

set -eu

if [ $# -ne 2 ]; then
    echo "usage: fuzz/run.sh <build-dir> <seconds-per-target>" >&2
    exit 1
fi

build=$1
seconds=$2
here=$(cd "$(dirname "$0")" && pwd)
found=0

for program in "$build"/fuzz/fuzz_*; do
    [ -f "$program" ] && [ -x "$program" ] || continue
    found=1
    name=$(basename "$program")
    name=${name#fuzz_}
    work="$build/fuzz/runs/$name"
    mkdir -p "$work/corpus" "$work/home"

    # One input may take no more than 25 s and no more than 2 GiB; the largest is small, since the formats are.
    echo "fuzzing $name for $seconds s"
    if ! SORDELIN_HOME="$work/home" "$program" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -max_len=4096 \
            -artifact_prefix="$work/" -print_final_stats=0 -verbosity=0 \
            "$work/corpus" "$here/corpus/$name" > "$work/log.txt" 2>&1; then
        tail -n 60 "$work/log.txt" >&2
        echo "$name failed; the input is in $work" >&2
        exit 2
    fi
done

if [ $found -eq 0 ]; then
    echo "no fuzz targets in $build/fuzz" >&2
    exit 1
fi
