# Front door for the usual commands; see README.md.
PRESET ?= dev
.PHONY: setup build test demo asan tsan release bench bench-count clean setup-arm test-arm test-armhf test-aarch64

setup:
	@scripts/setup

build: setup
	@cmake --preset $(PRESET) >/dev/null
	@cmake --build --preset $(PRESET)

test: build
	@ctest --preset $(PRESET)

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

clean:
	rm -rf build
