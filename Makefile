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

.PHONY: help demo test bench format clean
help:
	@echo "make demo    build tavok and run the SVE examples, directly and under tavok"
	@echo "make test    build and run every test"
	@echo "make bench   print the benchmark tables"
	@echo "make format  reformat the sources"
	@echo "make clean   remove the build trees"

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

bench:
	@tools/install-packages bench
	@bench/run $(PRODUCT_PRESET)

format:
	git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format -i

clean:
	rm -rf build
