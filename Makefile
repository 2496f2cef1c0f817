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

bench: build
	@for b in build/release/bench/bench_*; do [ -f "$$b" ] && [ -x "$$b" ] || continue; \
		echo "== $$b"; $$b --benchmark_min_time=0.2 || exit 1; done

FUZZ_SECONDS ?= 60
fuzz: deps
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@FUZZ_SECONDS=$(FUZZ_SECONDS) scripts/fuzz.sh

install: build
	cmake --install build/release

clean:
	rm -rf build
