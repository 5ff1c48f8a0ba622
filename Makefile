# Entry points for newcomers and CI:
#   make demo        build and run the demo on its built-in sample image
#   make test        build and run the suite in Release, then again under ASan+UBSan,
#                    then the Python package's tests
#   make test-python the Python package (over build/libquorin.so) and its tests
#   make bench-python the Python package beside Pillow, OpenCV and pyvips
#   make bench       build and run the benchmark (Release); its per-target table
#                    sets every vector target the machine runs side by side
#                    (BENCH_ARGS='--targets=AVX2,SSE4' or --targets=none to narrow it)
#   make demo-check  what a fresh machine meets: the demo configured and built with
#                    the test-only and bench-only packages hidden from CMake
#   make test-clang  build with Debian's Clang and run the suite
#   make test-tsan   build the suite under ThreadSanitizer (Clang) and run it with the scalar
#                    and the best vector kernel only (a race depends on the split, not the
#                    instruction set) and without the sweeps of the blend and 8-bit flatten
#                    rules over their input spaces (arithmetic the other builds check)
#   make fuzz        fuzz every image entry point for FUZZ_SECONDS (default 300)
#                    under ASan+UBSan; new inputs go to build-fuzz/corpus,
#                    findings to build-fuzz/artifacts
#   make fuzz-corpus minimise the seeds and build-fuzz/corpus into fuzz/corpus
#   make cross       cross-build for aarch64 and armv7 hard-float (Debian's cross compilers
#                    and multiarch packages) and run the golden checksums and a reduced suite
#                    under qemu-user;
#                    make cross-aarch64 CROSS_BUILD=all CROSS_TESTS=. builds and runs the whole suite
#   make goldens     rewrite tests/Golden/checksums.txt from this machine's kernels, after a
#                    member is added or its bytes change on purpose (every kernel must agree)
.PHONY: demo test test-release test-sanitize test-python python-package bench-python test-clang test-tsan fuzz fuzz-build fuzz-corpus bench demo-check deps clean cross goldens

FUZZ_SECONDS ?= 300
FUZZ_ARGS ?=

JOBS ?= $(shell nproc)
# Extra configure arguments, for example CI's -DCMAKE_COMPILE_WARNING_AS_ERROR=ON.
CMAKE_ARGS ?=
# Medians of three runs of every row, the rows interleaved in random order so
# that a slow spell of this shared machine does not fall on one row alone.
BENCH_ARGS ?= --benchmark_repetitions=3 --benchmark_enable_random_interleaving=true \
              --benchmark_report_aggregates_only=true

deps-%:
	@bash scripts/install-deps.sh $*

# The demo needs only the build packages: tests and benchmark stay AUTO (built
# only if their packages are there). The targets that need them turn them ON,
# which makes a missing package a configure error rather than an empty suite.
demo: deps-build
	cmake --preset release $(CMAKE_ARGS) >/dev/null
	cmake --build build -j $(JOBS) --target quorin-demo
	./build/tools/quorin-demo out

test: test-release test-sanitize test-python

test-release: deps-test
	cmake --preset release -DQUORIN_BUILD_TESTS=ON $(CMAKE_ARGS) >/dev/null
	cmake --build build -j $(JOBS)
	ctest --preset release

test-sanitize: deps-test
	cmake --preset sanitize -DQUORIN_BUILD_TESTS=ON $(CMAKE_ARGS) >/dev/null
	cmake --build build-sanitize -j $(JOBS)
	ctest --preset sanitize

# The Python package around the library the C suite tested: packaged from
# build/ without compiling it again, into a virtual environment under build/.
PYTHON_ENV ?= build/python-env
PYTHON_INSTALL = $(PYTHON_ENV)/bin/pip install -q --no-build-isolation --no-deps --force-reinstall ./python \
                 -C cmake.define.QUORIN_PREBUILT_DIR=$(CURDIR)/build

python-package: deps-build
	bash scripts/install-deps.sh python $(PYTHON_ENV)
	cmake --preset release $(CMAKE_ARGS) >/dev/null
	cmake --build build -j $(JOBS) --target quorin
	$(PYTHON_INSTALL)

test-python: python-package
	cd python/tests && PATH="$(CURDIR)/$(PYTHON_ENV)/bin:$$PATH" python -m pytest -q

# The package beside Pillow, cv2 and pyvips, and its cost over a call from C.
PYTHON_BENCH_ARGS ?=
bench-python: python-package
	$(PYTHON_ENV)/bin/pip install -q -r python/bench/requirements.txt
	cc -O2 -Wall python/bench/ccall.c -Iinclude -Ibuild/include -Lbuild -Wl,-rpath,$(CURDIR)/build -lquorin \
	    -o build/python-bench-ccall
	$(PYTHON_ENV)/bin/python python/bench/bench.py --ccall build/python-bench-ccall $(PYTHON_BENCH_ARGS)

# The suite under a Clang preset, built in build-<preset>.
test-clang test-tsan: test-%: deps-clang
	cmake --preset $* >/dev/null
	cmake --build build-$* -j $(JOBS)
	ctest --preset $*

fuzz-build: deps-clang
	cmake --preset fuzz >/dev/null
	cmake --build build-fuzz -j $(JOBS) --target quorin_fuzz

fuzz: fuzz-build
	mkdir -p build-fuzz/corpus build-fuzz/artifacts
	./build-fuzz/fuzz/quorin_fuzz -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
	    -artifact_prefix=build-fuzz/artifacts/ $(FUZZ_ARGS) build-fuzz/corpus fuzz/corpus

fuzz-corpus: fuzz-build
	rm -rf build-fuzz/minimised && mkdir -p build-fuzz/minimised build-fuzz/corpus
	./build-fuzz/fuzz/quorin_fuzz -merge=1 build-fuzz/minimised fuzz/corpus build-fuzz/corpus
	rm -f fuzz/corpus/* && cp build-fuzz/minimised/* fuzz/corpus/

# The ARM builds have no libdispatch: their parallel pieces run in order on
# the calling thread. By default a reduced suite is built and run under
# emulation: the golden checksums (every member, every kernel, split and
# whole), the core tests (processor features, the in-order parallel pieces),
# the refusals and guard bytes of every member, the fuzzer's corpus, the
# histograms, the buffer utilities, the platform and C consumers; and the library is searched for
# float instructions whose results vary. The whole suite under qemu takes
# several times as long (its conversion tests most); CROSS_BUILD=all
# CROSS_TESTS=. runs it.
CROSS_TARGETS ?= aarch64 armv7
CROSS_BUILD ?= quorin quorin_test_Golden quorin_test_Core quorin_test_Safety quorin_test_Histogram \
               quorin_test_Utilities quorin_test_Platform quorin_fuzz_replay quorin_c_consumer
CROSS_TESTS ?= ^(Golden|float_instructions|Core|Safety|Histogram|Utilities|Platform|fuzz_corpus|c_consumer)$$

cross: $(addprefix cross-,$(CROSS_TARGETS))

cross-%: deps-cross
	cmake --preset $* $(CMAKE_ARGS) >/dev/null
	cmake --build build-$* -j $(JOBS) --target $(CROSS_BUILD)
	ctest --preset $* -R '$(CROSS_TESTS)'

goldens: deps-test
	cmake --preset release -DQUORIN_BUILD_TESTS=ON $(CMAKE_ARGS) >/dev/null
	cmake --build build -j $(JOBS) --target quorin_test_Golden
	QUORIN_WRITE_GOLDENS=$(CURDIR)/tests/Golden/checksums.txt ./build/tests/quorin_test_Golden

bench: deps-bench
	cmake --preset release -DQUORIN_BUILD_BENCH=ON $(CMAKE_ARGS) >/dev/null
	cmake --build build -j $(JOBS) --target quorin-bench
	./build/bench/quorin-bench --benchmark_counters_tabular=true $(BENCH_ARGS)

demo-check: deps-build
	bash scripts/check-demo-build.sh build-demo-check

clean:
	rm -rf build build-sanitize build-demo-check build-clang build-tsan build-fuzz build-aarch64 build-armv7 out
