#!/bin/bash
# run-tests.sh BUILD...: runs the tests of several build trees with ctest, all of them to the end, and closes with one
# line that adds them up. Fails if a test failed or a tree ran none.
set -uo pipefail

passed=0
failed=0
for build in "$@"; do
    echo "== $build"
    log=$(mktemp)
    ctest --test-dir "$build" --output-on-failure -j "$(nproc)" >"$log" 2>&1
    grep -v '^ *Start ' "$log"
    # "97% tests passed, 3 tests failed out of 120"
    summary=$(sed -nE 's/.*tests passed, ([0-9]+) tests failed out of ([0-9]+).*/\1 \2/p' "$log" | tail -1)
    rm -f "$log"
    if [ -z "$summary" ]; then
        echo "no tests ran in $build"
        failed=$((failed + 1))
        continue
    fi
    read -r bad all <<<"$summary"
    passed=$((passed + all - bad))
    failed=$((failed + bad))
done

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
