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

# Runs each fuzz target for FUZZ_SECONDS (default 120) within 2 GB: fuzz_shell (the parser and
# evaluator, with the language's dictionary and seeds of deep nesting, long flat expressions and
# huge numbers), then fuzz_library (the entry points with generated arguments). Each keeps its
# corpus in build/fuzz/corpus-<target> between runs; crashes land in build/fuzz/.
FUZZ_SECONDS ?= 120
FUZZ_TARGETS ?= fuzz_shell fuzz_library
# FUZZ_KEEP_GOING=1 runs each target in a child process that is restarted after a finding, so
# that a long campaign collects every crash and timeout instead of stopping at the first.
FUZZ_KEEP_GOING ?= 0
FUZZ_FLAGS = -max_total_time=$(FUZZ_SECONDS) -timeout=10 -rss_limit_mb=2048 -detect_leaks=0 -artifact_prefix=build/fuzz/
ifeq ($(FUZZ_KEEP_GOING),1)
FUZZ_FLAGS += -fork=1 -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1
endif
fuzz: deps
	@scripts/install-deps --fuzz
	@CC=clang CXX=clang++ cmake -S . -B build/fuzz -DVEXA_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build build/fuzz -j$(JOBS) --target $(FUZZ_TARGETS)
	@mkdir -p build/fuzz/corpus-fuzz_shell build/fuzz/corpus-fuzz_library
	@cp tests/shell/*.vx tests/shell/fuzz/seeds/*.vx examples/*.vx build/fuzz/corpus-fuzz_shell/ 2>/dev/null || true
	@for t in $(FUZZ_TARGETS); do \
	  dict=; [ $$t = fuzz_shell ] && dict="-max_len=4096 -dict=tests/shell/fuzz/shell.dict"; \
	  echo "== $$t for $(FUZZ_SECONDS) s"; \
	  build/fuzz/$$t $(FUZZ_FLAGS) $$dict build/fuzz/corpus-$$t || exit 1; \
	done

clean:
	rm -rf build

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')
