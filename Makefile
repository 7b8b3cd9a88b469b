# The project's commands. Each one installs what is missing first (scripts/install-deps), so
# that `make demo` and `make check` work on a fresh Debian machine with nothing else done.
FUZZ_SECONDS ?= 30
CTEST_JOBS ?= 2
# Builds take a lock so that several checkouts on one machine never compile at once.
LOCK := flock /tmp/korvex-build.lock

.PHONY: all deps build demo check bench fuzz asan clean screenshots

all: build

deps:
	@scripts/install-deps

build: deps
	@cmake --preset debug >/dev/null
	@$(LOCK) cmake --build --preset debug

demo: build
	@if [ -n "$$DISPLAY" ] || [ -n "$$WAYLAND_DISPLAY" ]; then \
		build/debug/apps/demo/korvex_demo; \
	else \
		echo "No display: rendering the demo offscreen into build/screenshots/"; \
		QT_QPA_PLATFORM=offscreen build/debug/apps/demo/korvex_demo --screenshot build/screenshots && \
		ls -1 build/screenshots/*.png; \
	fi

# The README's pictures: the demo rendered offscreen, the forms it shows copied into docs/.
SCREENSHOTS := frmLabels frmInputs frmNumbers frmCustomers_Editing frmDisplay frmGrid frmLists frmCombo frmCombo_Open frmEmail
screenshots: build
	@rm -rf build/screenshots
	@QT_QPA_PLATFORM=offscreen build/debug/apps/demo/korvex_demo --screenshot build/screenshots
	@mkdir -p docs/screenshots
	@for f in $(SCREENSHOTS); do cp build/screenshots/$$f.png docs/screenshots/; done
	@ls -1 docs/screenshots

check: build
	@$(LOCK) ctest --preset debug -j $(CTEST_JOBS)

bench: deps
	@cmake --preset release >/dev/null
	@$(LOCK) cmake --build --preset release
	@$(LOCK) scripts/run-benchmarks build/release/bench

fuzz: deps
	@cmake --preset fuzz >/dev/null
	@$(LOCK) cmake --build --preset fuzz
	@FUZZ_SECONDS=$(FUZZ_SECONDS) scripts/run-fuzzers build/fuzz/fuzz

asan: deps
	@cmake --preset asan >/dev/null
	@$(LOCK) cmake --build --preset asan
	@$(LOCK) ctest --preset asan -j $(CTEST_JOBS)

clean:
	rm -rf build
