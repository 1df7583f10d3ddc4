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

.PHONY: all deps build test demo bench fuzz clean format

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

clean:
	rm -rf build

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')
