# Entry points for newcomers and CI:
#   make demo   build and run the demo on its built-in sample image
#   make test   build and run the suite in Release, then again under ASan+UBSan
#   make bench  build and run the benchmark (Release)
.PHONY: demo test test-release test-sanitize bench deps clean

JOBS ?= $(shell nproc)
# Medians of three runs of every row, the rows interleaved in random order so
# that a slow spell of this shared machine does not fall on one row alone.
BENCH_ARGS ?= --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
              --benchmark_report_aggregates_only=true

deps-%:
	@bash scripts/install-deps.sh $*

build/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset release >/dev/null

build-sanitize/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset sanitize >/dev/null

demo: deps-build
	cmake --preset release >/dev/null
	cmake --build build -j $(JOBS) --target quorin-demo
	./build/tools/quorin-demo out

test: test-release test-sanitize

test-release: deps-test
	cmake --preset release >/dev/null
	cmake --build build -j $(JOBS)
	ctest --preset release

test-sanitize: deps-test
	cmake --preset sanitize >/dev/null
	cmake --build build-sanitize -j $(JOBS)
	ctest --preset sanitize

bench: deps-bench
	cmake --preset release >/dev/null
	cmake --build build -j $(JOBS) --target quorin-bench
	./build/bench/quorin-bench --benchmark_counters_tabular=true $(BENCH_ARGS)

clean:
	rm -rf build build-sanitize out
