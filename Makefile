# Tidewell's everyday commands. `make run` and `make test` work alone on a fresh Debian 12 machine: each first
# installs whatever Debian package is missing.

PRESET ?= dev
BUILD  := build/$(PRESET)
WERROR := $(if $(filter true 1 yes,$(CI)),ON,OFF)
SAMPLE := build/sample-disk
# The sample disk `make run` opens: linux, or macos.
LAYOUT ?= linux

# The long forms: `make fuzz` runs each fuzzer this many seconds; `make stress` kills this many purges, races
# removals for this many seconds, and runs this many purges while their profile folder is swapped for a link.
FUZZ_SECONDS  ?= 300
KILLS         ?= 60
RACE_SECONDS  ?= 30
JOURNAL_SWAPS ?= 400

.PHONY: all deps configure build run test browser-test fuzz-build sanitize fuzz stress bench screenshots package clean

all: build

deps:
	@scripts/deps.sh

configure: deps
	@cmake --preset $(PRESET) -DTIDEWELL_WERROR=$(WERROR) >/dev/null

build: configure
	@cmake --build $(BUILD)

# The main job: the window application on the sample disk, or, with no display to show it on, the command-line
# scan of the same disk. The window run keeps its settings, grant, login item and crash reports under build/, away
# from the person's own Tidewell.
run: build
	@$(BUILD)/tools/sample_disk/tidewell-sample-disk --layout $(LAYOUT) $(SAMPLE) ann
	@if [ -n "$${DISPLAY:-}$${WAYLAND_DISPLAY:-}" ]; then \
		echo "XDG_CONFIG_HOME=build/run/config XDG_DATA_HOME=build/run/data $(BUILD)/src/tidewell --root $(SAMPLE) --user ann --layout $(LAYOUT)"; \
		XDG_CONFIG_HOME=$(CURDIR)/build/run/config XDG_DATA_HOME=$(CURDIR)/build/run/data \
			$(BUILD)/src/tidewell --root $(SAMPLE) --user ann --layout $(LAYOUT); \
	else \
		echo "$(BUILD)/src/tidewell-cli --root $(SAMPLE) --user ann --layout $(LAYOUT) scan"; \
		$(BUILD)/src/tidewell-cli --root $(SAMPLE) --user ann --layout $(LAYOUT) scan; \
	fi

# The test suite (with a short kill series and short races), then each fuzzer briefly over its corpus.
test: build fuzz-build
	@ctest --preset $(PRESET)
	@ctest --preset fuzz

# The real browsers, Debian's chromium and firefox-esr, installed when missing: each makes a profile headless, the
# history removal purges it, and the browser must take it back as its own (about 10 s here, outside `make test`).
browser-test: build
	@scripts/deps.sh browsers
	@ctest --preset browsers

fuzz-build: deps
	@cmake --preset fuzz -DTIDEWELL_WERROR=$(WERROR) >/dev/null
	@cmake --build build/fuzz

# The core tests under AddressSanitizer with UndefinedBehaviorSanitizer, and under ThreadSanitizer.
sanitize: deps
	@for preset in asan tsan; do \
		cmake --preset $$preset -DTIDEWELL_WERROR=$(WERROR) >/dev/null && \
		cmake --build build/$$preset && \
		ctest --preset $$preset -L core || exit 1; \
	done

# Each fuzzer for FUZZ_SECONDS; what it finds that reaches new code joins the corpus in fuzz/corpus.
fuzz: fuzz-build
	scripts/fuzz.sh $(FUZZ_SECONDS)

# The kill series, the races (the journal-swap race among them) and the adversarial disks at length.
stress: build
	TIDEWELL_KILLS=$(KILLS) TIDEWELL_RACE_SECONDS=$(RACE_SECONDS) TIDEWELL_JOURNAL_SWAPS=$(JOURNAL_SWAPS) \
		$(BUILD)/tests/tidewell_tests \
		--gtest_filter='HistoryPurgeKills.*:SwapRace.*:JournalSwapRace.*:Disks/AdversarialDisk.*:HistoryDatabaseFaults.*'

# Benchmarks run on an optimised build; each prints its ratio against a baseline timed in the same run.
bench: deps
	@cmake --preset release -DTIDEWELL_WERROR=$(WERROR) >/dev/null
	@cmake --build build/release
	build/release/bench/tidewell-bench-scan --cli build/release/src/tidewell-cli --disk build/bench-disk
	build/release/bench/tidewell-bench-clean --cli build/release/src/tidewell-cli --disk build/bench-disk
	build/release/bench/tidewell-bench-purge
	build/release/bench/tidewell-bench-limits

# The windows rendered offscreen to build/screenshots/*.png, to look at without a display.
screenshots: build
	@QT_QPA_PLATFORM=offscreen $(BUILD)/tools/screenshots/tidewell-screenshots build/screenshots

# A Debian package of tidewell and tidewell-cli, from an optimised build without tests: build/package/*.deb, with
# manual pages made from the programs' help. lintian fails it on any error or warning; the AppStream metadata and
# the desktop entry are validated too (offline: the screenshot's address on the web site is not fetched).
package:
	@scripts/deps.sh package
	@cmake --preset package -DTIDEWELL_WERROR=$(WERROR) >/dev/null
	@cmake --build build/package --target package
	appstreamcli validate --no-net --pedantic --strict packaging/app.tidewell.tidewell.metainfo.xml
	desktop-file-validate resources/tidewell.desktop
	lintian --fail-on error,warning build/package/tidewell_*.deb

clean:
	rm -rf build
