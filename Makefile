# The two set-up commands are `make run` and `make test`; both install what is missing first.
JOBS ?= $(shell nproc)

.PHONY: deps run build test bench fuzz install clean

deps:
	@scripts/install-deps.sh

build: deps
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)

# Starts on the welcome window; `make run SAMPLE=file.md` opens a sermon instead.
SAMPLE ?=
run: build
	build/release/src/app/orantium $(SAMPLE)

test: deps
	@cmake --preset test >/dev/null
	@cmake --build --preset test -j $(JOBS)
	ctest --preset test -j $(JOBS)

# Every benchmark at 300 to 100,000 lines, as one table with each one's growth.
bench: build
	@scripts/bench-table.py --min-time 0.2 build/release/bench/bench_*

FUZZ_SECONDS ?= 60
fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@FUZZ_SECONDS=$(FUZZ_SECONDS) scripts/fuzz.sh

install: build
	cmake --install build/release

clean:
	rm -rf build
