# Front door for the usual commands; see README.md.
PRESET ?= dev
.PHONY: test-web setup build test demo asan tsan release bench bench-count clean setup-arm test-arm test-armhf test-aarch64 \
	setup-fuzz fuzz-build fuzz fuzz-merge powercut

setup:
	@scripts/setup

build: setup
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET)

test: build
	@ctest --preset $(PRESET)

# camsim serve in a real browser (tests/web/e2e.mjs): Debian's chromium driven by
# playwright-core; skipped, with a message, where chromium cannot be installed.
test-web: build
	@scripts/setup --web
	@node tests/web/e2e.mjs build/$(PRESET)/tools/camsim

# The simulator camera's compressed day (tools/camsim, README "Simulator camera").
demo: build
	@build/$(PRESET)/tools/camsim demo

asan:
	@$(MAKE) --no-print-directory test PRESET=asan

tsan:
	@$(MAKE) --no-print-directory test PRESET=tsan

release:
	@$(MAKE) --no-print-directory build PRESET=release

bench: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release
	@for b in build/release/bench/bench_*; do [ -x "$$b" ] && "$$b"; done

# Instructions, allocations and file-system calls of the parameter path under callgrind,
# against their budgets (exit status 1 when one is missed).
bench-count:
	@scripts/setup --valgrind
	@cmake --preset release >/dev/null
	@cmake --build --preset release --target param_path_count
	@build/release/bench/param_path_count

# ARM cross builds (MinSizeRel), their whole test suite run under qemu-user.
setup-arm:
	@scripts/setup --arm

test-arm: test-armhf test-aarch64

test-armhf test-aarch64: test-%: setup-arm
	@cmake --preset $* >/dev/null
	@cmake --build --preset $*
	@ctest --preset $*
	@ctest --preset $* -R '^sensorctl_size_budget$$' -V | grep -o 'stripped libsensorctl.so.*'

# Fuzzing (fuzz/README.md): every libFuzzer target for FUZZ_SECONDS each, one after the
# other. New inputs collect in build/fuzz/corpus/<target>, findings in build/fuzz/findings;
# `make fuzz-merge` folds the new inputs into the committed corpora, minimised.
FUZZ_SECONDS ?= 60
FUZZ_TARGETS = $(basename $(notdir $(wildcard fuzz/targets/*.cpp)))

setup-fuzz:
	@scripts/setup --fuzz

fuzz-build: setup-fuzz
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz

fuzz: fuzz-build
	@mkdir -p build/fuzz/findings
	@for t in $(FUZZ_TARGETS); do \
	  mkdir -p build/fuzz/corpus/$$t; \
	  echo "fuzz: $$t for $(FUZZ_SECONDS) s"; \
	  build/fuzz/fuzz/fuzz_$$t -max_total_time=$(FUZZ_SECONDS) -close_fd_mask=1 -print_final_stats=1 \
	    -artifact_prefix=build/fuzz/findings/$$t- build/fuzz/corpus/$$t fuzz/corpus/$$t 2>build/fuzz/$$t.log \
	    || { tail -40 build/fuzz/$$t.log; exit 1; }; \
	  grep -E '^stat::number_of_executed_units' build/fuzz/$$t.log | sed "s/^/  $$t /"; \
	done

fuzz-merge: fuzz-build
	@for t in $(FUZZ_TARGETS); do \
	  rm -rf build/fuzz/merged/$$t && mkdir -p build/fuzz/merged/$$t build/fuzz/corpus/$$t; \
	  build/fuzz/fuzz/fuzz_$$t -merge=1 -close_fd_mask=1 build/fuzz/merged/$$t fuzz/corpus/$$t build/fuzz/corpus/$$t \
	    2>build/fuzz/$$t-merge.log || { tail -20 build/fuzz/$$t-merge.log; exit 1; }; \
	  rm -f fuzz/corpus/$$t/* && cp build/fuzz/merged/$$t/* fuzz/corpus/$$t/; \
	  echo "fuzz-merge: $$t: $$(ls fuzz/corpus/$$t | wc -l) inputs"; \
	done

# Power cuts (tools/powercut/main.cpp): the simulator camera as the writer, killed at
# POWERCUT_CUTS random moments, every other cut with the unsynced writes dropped. The dev
# build: the writer runs with an LD_PRELOAD shim, which the sanitizer runtimes do not allow.
POWERCUT_CUTS ?= 1000
POWERCUT_SEED ?= 1

powercut:
	@$(MAKE) --no-print-directory build PRESET=dev
	@build/dev/tools/powercut --cuts $(POWERCUT_CUTS) --seed $(POWERCUT_SEED)

clean:
	rm -rf build
