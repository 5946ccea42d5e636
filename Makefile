# The commands that people type. Each first installs what is missing (Debian packages).
JOBS ?= $(shell nproc)
MACHINE := $(shell uname -m)
MAKEFLAGS += --no-print-directory

# On an AArch64 machine the native build is the whole product, and nothing is cross-compiled.
ifeq ($(MACHINE),aarch64)
TEST_PRESETS := native asan tsan
PRODUCT_PRESET := native
else
TEST_PRESETS := native asan tsan aarch64
PRODUCT_PRESET := aarch64
endif

# Simulated machines: one whose processor authenticates pointers, and an old one.
KERNEL_CPUS ?= max,sve=off,pauth-impdef=on cortex-a72
KERNEL_TESTS ?= 'runtime|program|inspect|distribution'

# How long `soak` takes.
SOAK_MINUTES ?= 60

.PHONY: help demo test test-kernel test-kernel-quick soak bench format clean
help:
	@echo "make demo         build tavok and run the SVE examples, directly and under tavok"
	@echo "make test         build and run every test"
	@echo "make test-kernel  run the tests on Debian's kernel in a simulated machine"
	@echo "make soak         run heavy programs under disturbance, for an hour"
	@echo "make bench        print the benchmark tables"
	@echo "make format       reformat the sources"
	@echo "make clean        remove the build trees"

# The demo needs no package of the tests. The next configuration by a preset has them again. It makes
# all that `cmake --install` takes.
demo:
	@tools/install-packages demo
	@cmake --preset $(PRODUCT_PRESET) -DBUILD_TESTING=OFF >/dev/null
	@cmake --build --preset $(PRODUCT_PRESET) -j$(JOBS) --target tavok tavok_client tools examples
	@examples/demo build/$(PRODUCT_PRESET)

test:
	@tools/install-packages test
	@set -e; for preset in $(TEST_PRESETS); do \
	  echo "== $$preset"; \
	  cmake --preset $$preset >/dev/null; \
	  cmake --build --preset $$preset -j$(JOBS); \
	  ctest --preset $$preset -j$(JOBS); \
	done

# One after the other, and the status tells of all.
test-kernel:
	@tools/install-packages test-kernel
	@cmake --preset $(PRODUCT_PRESET) >/dev/null
	@cmake --build --preset $(PRODUCT_PRESET) -j$(JOBS)
	@status=0; for cpu in $(KERNEL_CPUS); do \
	  echo "== $(PRODUCT_PRESET) on Debian's kernel, $$cpu"; \
	  tests/kernel/run build/$(PRODUCT_PRESET) $$cpu $(KERNEL_TESTS) || status=1; \
	done; exit $$status

# What needs no kernel is left out.
test-kernel-quick:
	@$(MAKE) test-kernel KERNEL_CPUS=$(firstword $(KERNEL_CPUS)) \
	  KERNEL_TESTS="runtime -E '(ir|passes|elf)_test'"

soak:
	@tools/install-packages test
	@cmake --preset $(PRODUCT_PRESET) >/dev/null
	@cmake --build --preset $(PRODUCT_PRESET) -j$(JOBS) --target tavok programs
	@ctest --preset $(PRODUCT_PRESET) -R '^distribution\..*(packages|inputs)$$' >/dev/null
	@tests/distribution/soak build/$(PRODUCT_PRESET) $(SOAK_MINUTES)

bench:
	@tools/install-packages bench
	@bench/run $(PRODUCT_PRESET)

format:
	git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

clean:
	rm -rf build
