# make          builds everything into dist/
# make demo     builds, then plays a tune on the plug-in: out/demo.wav, out/window.png
# make factory-audition   builds, then plays each factory sound: out/audition/*.wav and a picture of each
# make screenshots   builds, then writes pictures of the window to docs/images
# make test     builds and runs every test, also under sanitizers, fuzzes briefly and checks the formatting
# make bench    runs the benchmarks
# make fuzz     fuzzes for longer (FUZZ_SECONDS for each target)
# make format   formats the sources
# make clean    removes all that was built

JOBS ?= $(shell nproc)
CLANG_FORMAT ?= clang-format-14
FUZZ_SECONDS ?= 300
SHORT_FUZZ_SECONDS ?= 10
SOURCES = $(shell find src tests bench fuzz tools -name '*.h' -o -name '*.cpp')

# configure PRESET: quiet unless it fails
define configure
	@mkdir -p build
	@cmake --preset $(1) >build/$(1).log || { cat build/$(1).log; exit 1; }
endef

.PHONY: all setup release asan tsan demo factory-audition screenshots test bench fuzz format check-format clean

all: release

setup:
	@tools/setup.sh

release: setup
	$(call configure,$@)
	cmake --build build/$@ -j $(JOBS)

tsan: setup
	$(call configure,$@)
	cmake --build build/$@ -j $(JOBS) --target all_tests

# One tree for the tests and the fuzzers, which need the same sanitizers.
asan: setup
	$(call configure,$@)
	cmake --build build/$@ -j $(JOBS) --target all_tests fuzz

demo: release
	tools/demo.sh $(CURDIR)/dist $(CURDIR)/out

factory-audition: release
	tools/factory-audition.sh $(CURDIR)/dist $(CURDIR)/out

screenshots: release
	tools/screenshots.sh $(CURDIR)/dist $(CURDIR)/docs/images

# Tests come last: the sum of theirs is the last line. Not in parallel, whatever -j says.
test:
	@$(MAKE) --no-print-directory check-format
	@$(MAKE) --no-print-directory release
	@$(MAKE) --no-print-directory asan
	@$(MAKE) --no-print-directory tsan
	fuzz/run.sh build/asan $(SHORT_FUZZ_SECONDS)
	tools/run-tests.sh build/release build/asan build/tsan

bench: release
	@for program in build/release/bench/bench_*; do echo "== $$program"; $$program || exit 1; done

fuzz: asan
	fuzz/run.sh build/asan $(FUZZ_SECONDS)

format:
	$(CLANG_FORMAT) -i $(SOURCES)

check-format: setup
	@$(CLANG_FORMAT) --dry-run --Werror $(SOURCES) && echo "format: as the formatter leaves it"

clean:
	rm -rf build dist out
