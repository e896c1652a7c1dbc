#!/usr/bin/env bash
# Records what the sample disk prints (scan, extensions and the inventories) into
# tests/fixtures/sample-disk-outputs, where the test RecordedOutputs compares every later build against it. Run it
# only when an output changes on purpose, and commit the difference with the change that makes it.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/dev}
cmake --build "$build" --target tidewell_tests
TIDEWELL_RECORD_OUTPUTS="$PWD/tests/fixtures/sample-disk-outputs" \
    "$build/tests/tidewell_tests" --gtest_filter='RecordedOutputs.*'
