# Vantorel: `make run` builds and starts the editor, `make test` builds and runs every test.
# Both install missing Debian packages first.

JOBS ?= 2
BUILD ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
# CI treats warnings as errors; set WERROR=ON to do the same locally.
WERROR ?= $(if $(CI),ON,OFF)
CMAKE_FLAGS ?=

RUN_CONFIG := $(CURDIR)/$(BUILD)/run-config
SAMPLE_DATA := $(CURDIR)/examples/Data
LSAN_SUPPRESSIONS := $(CURDIR)/tests/lsan.supp

.PHONY: all deps configure build run test test-sanitize fuzz bench clean

all: build

deps:
	@tools/install-deps.sh

configure: deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release -DVANTOREL_WERROR=$(WERROR) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j$(JOBS)

# The editor runs with a settings folder of its own whose data directory is the sample game data,
# so the user's real settings are never touched. Only the editor is built for it.
run: configure
	cmake --build $(BUILD) -j$(JOBS) --target vantorel
	@mkdir -p $(RUN_CONFIG)/Tarnwick
	@[ -f $(RUN_CONFIG)/Tarnwick/Tarnwick.conf ] || \
	  printf '[Directories]\nDecompiled_Data=%s\n' "$(SAMPLE_DATA)" > $(RUN_CONFIG)/Tarnwick/Tarnwick.conf
	XDG_CONFIG_HOME=$(RUN_CONFIG) ./$(BUILD)/app/vantorel

test: build
	cd $(BUILD) && ctest --output-on-failure -j$(JOBS)

test-sanitize: deps
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVANTOREL_SANITIZE=ON \
	  -DVANTOREL_BENCH=OFF -DVANTOREL_WERROR=$(WERROR) $(CMAKE_FLAGS)
	cmake --build $(ASAN_BUILD) -j$(JOBS)
	cd $(ASAN_BUILD) && LSAN_OPTIONS=suppressions=$(LSAN_SUPPRESSIONS) \
	  ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --output-on-failure -j$(JOBS)

# Runs the script fuzzer for FUZZ_SECONDS under AddressSanitizer (clang and libFuzzer).
fuzz:
	@tools/install-deps.sh clang libclang-rt-14-dev
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DVANTOREL_FUZZ=ON -DVANTOREL_UI=OFF -DVANTOREL_BENCH=OFF $(CMAKE_FLAGS)
	cmake --build $(FUZZ_BUILD) -j$(JOBS) --target fuzz_script
	mkdir -p fuzz-out/corpus
	./$(FUZZ_BUILD)/fuzz/fuzz_script -max_total_time=$(FUZZ_SECONDS) -artifact_prefix=fuzz-out/ \
	  fuzz-out/corpus fuzz/corpus

bench: build
	@for b in $(BUILD)/bench/bench_*; do [ -x "$$b" ] && "$$b"; done; true

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
