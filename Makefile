# make demo: install what is missing, build, run the tour.   make test: install, build, run every test.
# make test SANITIZE=1 builds in build/sanitize with AddressSanitizer and UBSan.
SANITIZE ?= 0
JOBS ?= 2
ifeq ($(SANITIZE),1)
BUILD := build/sanitize
CMAKE_FLAGS := -DVEXA_SANITIZE=ON
else
BUILD := build
CMAKE_FLAGS :=
endif

.PHONY: all deps build test demo bench peers samplers fuzz clean format

all: build

deps:
	@scripts/install-deps

build: deps
	@cmake -S . -B $(BUILD) $(CMAKE_FLAGS) >/dev/null
	@cmake --build $(BUILD) -j$(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS)

demo: build
	@scripts/demo $(BUILD)

bench: deps
	@scripts/install-deps --bench
	@cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DVEXA_BENCH=ON >/dev/null
	@cmake --build build/bench -j$(JOBS)
	@scripts/bench build/bench

# Our distribution workers next to Boost.Math over MPFR and mpmath, at Digits 50 and 200.
peers: deps
	@scripts/install-deps --bench
	@cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DVEXA_BENCH=ON >/dev/null
	@cmake --build build/bench -j$(JOBS) --target peers
	@bench/peers/run --bin build/bench/bench/peers

# Normal and exponential samples of 10^6 next to mpfr_nrandom and Boost.Random over MPFR, and
# what the exact-sampling switch changes in their distribution.
samplers: deps
	@scripts/install-deps --bench
	@cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DVEXA_BENCH=ON >/dev/null
	@cmake --build build/bench -j$(JOBS) --target samplers
	@build/bench/bench/peers/samplers --quality
	@build/bench/bench/peers/samplers --benchmark_repetitions=5 --benchmark_report_aggregates_only=true

# Runs the parser and evaluator fuzz target for FUZZ_SECONDS (default 120), with the language's
# dictionary and seeds of deep nesting, long flat expressions and huge numbers.
FUZZ_SECONDS ?= 120
fuzz: deps
	@scripts/install-deps --fuzz
	@CC=clang CXX=clang++ cmake -S . -B build/fuzz -DVEXA_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build build/fuzz -j$(JOBS) --target fuzz_shell
	@mkdir -p build/fuzz/corpus
	@cp tests/shell/*.vx tests/shell/fuzz/seeds/*.vx examples/*.vx build/fuzz/corpus/ 2>/dev/null || true
	build/fuzz/fuzz_shell -max_total_time=$(FUZZ_SECONDS) -max_len=4096 -timeout=10 -rss_limit_mb=4096 -detect_leaks=0 -dict=tests/shell/fuzz/shell.dict -artifact_prefix=build/fuzz/ build/fuzz/corpus

clean:
	rm -rf build

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')
