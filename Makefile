# Tidewell's everyday commands. `make run` and `make test` work alone on a fresh Debian 12 machine: each first
# installs whatever Debian package is missing.

PRESET ?= dev
BUILD  := build/$(PRESET)
WERROR := $(if $(filter true 1 yes,$(CI)),ON,OFF)
SAMPLE := build/sample-disk

.PHONY: all deps configure build run test bench clean

all: build

deps:
	@scripts/deps.sh

configure: deps
	@cmake --preset $(PRESET) -DTIDEWELL_WERROR=$(WERROR) >/dev/null

build: configure
	@cmake --build $(BUILD)

# The main job: scan the sample disk.
run: build
	@$(BUILD)/tests/support/tidewell-sample-disk $(SAMPLE) ann
	$(BUILD)/src/tidewell-cli --root $(SAMPLE) --user ann scan

test: build
	@ctest --preset $(PRESET)

# Benchmarks run on an optimised build; each prints its ratio against a baseline timed in the same run.
bench: deps
	@cmake --preset release -DTIDEWELL_WERROR=$(WERROR) >/dev/null
	@cmake --build build/release
	build/release/bench/tidewell-bench-scan --cli build/release/src/tidewell-cli --disk build/bench-disk
	build/release/bench/tidewell-bench-purge

clean:
	rm -rf build
