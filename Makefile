# Entry points over the CMake presets; CONTRIBUTING.md tells how to work with the presets themselves.

PRESET ?= dev
FROM ?= /usr/share/common-licenses
FUZZ_SECONDS ?= 60

.PHONY: all demo test check bench fuzz format install clean

# build/release/lib/libquillon.so, libqcore.so and quillon/*.so; build/release/bin/quillon
all:
	@scripts/setup.sh build
	@cmake --preset release --log-level=WARNING
	@cmake --build --preset release --target quillon_tool converters

# The whole job on real files: make demo FROM=folder
demo: all
	@scripts/demo.sh build/release "$(FROM)"

# make test PRESET=asan (tsan, release, coverage) runs the same tests in another build.
test:
	@scripts/setup.sh build
	@cmake --preset $(PRESET) --log-level=WARNING
	@cmake --build --preset $(PRESET)
	@ctest --preset $(PRESET)

check:
	@scripts/setup.sh check
	@scripts/format.sh check
	@python3 scripts/check_includes.py

bench:
	@scripts/setup.sh build bench
	@cmake --preset bench --log-level=WARNING
	@cmake --build --preset bench
	@set -e; for program in build/bench/bin/*_bench; do $$program --benchmark_counters_tabular=true; done

# Each target for FUZZ_SECONDS, with its corpus under build/fuzz/corpus and its seeds.
fuzz:
	@scripts/setup.sh build fuzz
	@cmake --preset fuzz --log-level=WARNING
	@cmake --build --preset fuzz
	@set -e; for target in build/fuzz/bin/fuzz_*; do \
	  corpus=build/fuzz/corpus/$${target##*/}; mkdir -p $$corpus; \
	  seeds=fuzz/seeds/$${target##*/fuzz_}; [ -d $$seeds ] || seeds=; \
	  $$target -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 $$corpus $$seeds; done

format:
	@scripts/setup.sh check
	@scripts/format.sh

# make install PREFIX=folder
install: all
	@cmake --install build/release $(if $(PREFIX),--prefix "$(PREFIX)")

clean:
	rm -rf build
