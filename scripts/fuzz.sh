#!/usr/bin/env bash
# Runs each fuzzer for a while (the first argument, in seconds; 300 by default) from its corpus, merges the inputs
# it found that reach new code into the corpus kept in the repository, and prints each fuzzer's figures. A crash
# stops the run; its input is kept in build/fuzz/crashes/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-300}"
fuzzers=(local_state chrome_manifest extensions_json word_list disk_tree)
mkdir -p build/fuzz/crashes build/fuzz/work
figures=()
for fuzzer in "${fuzzers[@]}"; do
    program="build/fuzz/fuzz/fuzz_$fuzzer"
    work="build/fuzz/work/$fuzzer"
    log="build/fuzz/work/$fuzzer.log"
    rm -rf "$work" && mkdir -p "$work"
    dictionary=()
    if [ -f "fuzz/dict/$fuzzer.dict" ]; then
        dictionary=(-dict="fuzz/dict/$fuzzer.dict")
    fi
    echo "fuzz_$fuzzer: ${seconds}s"
    if ! "$program" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 -print_final_stats=1 \
        "${dictionary[@]}" -artifact_prefix="build/fuzz/crashes/$fuzzer-" "$work" "fuzz/corpus/$fuzzer" 2>"$log"; then
        tail -n 60 "$log"
        echo "fuzz_$fuzzer failed; the input is in build/fuzz/crashes/" >&2
        exit 1
    fi
    before=$(find "fuzz/corpus/$fuzzer" -type f | wc -l)
    "$program" -merge=1 "fuzz/corpus/$fuzzer" "$work" 2>>"$log"
    after=$(find "fuzz/corpus/$fuzzer" -type f | wc -l)
    runs=$(grep -m1 -o 'number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$')
    coverage=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1)
    figures+=("fuzz_$fuzzer: $runs executions in ${seconds} s, $coverage, corpus $before -> $after inputs")
done
printf '%s\n' "${figures[@]}"
