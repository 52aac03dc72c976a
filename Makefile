# Orvanex: `make test` installs what is missing, builds with AddressSanitizer and
# UndefinedBehaviorSanitizer in build/asan and runs the suite; `make demo` builds the release tree
# in build/ and runs the example batch macro.
JOBS ?= 2
RELEASE_DIR := build
TEST_DIR := build/asan

.PHONY: all deps release test demo bench fuzz clean

all: release

deps:
	./scripts/install-deps

$(RELEASE_DIR)/build.ninja:
	cmake -S . -B $(RELEASE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release -DORVANEX_TESTS=OFF -DORVANEX_BENCH=ON

release: deps $(RELEASE_DIR)/build.ninja
	cmake --build $(RELEASE_DIR) -j $(JOBS)

$(TEST_DIR)/build.ninja:
	cmake -S . -B $(TEST_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVANEX_SANITIZE=ON -DORVANEX_TESTS=ON

test: deps $(TEST_DIR)/build.ninja
	cmake --build $(TEST_DIR) -j $(JOBS)
	cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)

demo: release
	./examples/run-demo $(RELEASE_DIR)/bin/orvanex

bench: release
	./scripts/install-deps bench
	./bench/startup.sh $(RELEASE_DIR)/bin/orvanex
	$(RELEASE_DIR)/bin/orvanex_bench_zones
	$(RELEASE_DIR)/bin/orvanex_bench
	$(RELEASE_DIR)/bin/orvanex_bench_face
	$(RELEASE_DIR)/bin/orvanex_bench_dataio /tmp
	./bench/fenrow.sh $(RELEASE_DIR)/bin
	$(RELEASE_DIR)/bin/orvanex_bench_loadflow /tmp
	./bench/macro.sh $(RELEASE_DIR)/bin/orvanex
	$(RELEASE_DIR)/bin/orvanex_bench_vdi
	./bench/export.sh $(RELEASE_DIR)/bin/orvanex
	./bench/contour.sh $(RELEASE_DIR)/bin

# Fuzzes the binary data file reader, the text converter and the macro reader for FUZZ_SECONDS
# (default 60) each, from the seed files in tests/fuzz.
FUZZ_SECONDS ?= 60
fuzz: deps
	CC=clang CXX=clang++ cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVANEX_FUZZ=ON -DORVANEX_TESTS=OFF
	cmake --build build/fuzz -j $(JOBS) --target fuzz_dataio fuzz_fenrow fuzz_macro
	mkdir -p build/fuzz/corpus build/fuzz/corpus_text build/fuzz/corpus_macro
	cp tests/fuzz/corpus/* build/fuzz/corpus/ && cp tests/fuzz/corpus_text/* build/fuzz/corpus_text/ && cp tests/fuzz/corpus_macro/* build/fuzz/corpus_macro/
	build/fuzz/bin/fuzz_dataio -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=4096 build/fuzz/corpus
	build/fuzz/bin/fuzz_fenrow -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=4096 -timeout=10 build/fuzz/corpus_text
	build/fuzz/bin/fuzz_macro -max_total_time=$(FUZZ_SECONDS) -rss_limit_mb=4096 -timeout=10 build/fuzz/corpus_macro

clean:
	rm -rf build

# ThreadSanitizer run of the thread tests alone, in its own tree; not part of `make test`.
TSAN_DIR := build/tsan

.PHONY: tsan

$(TSAN_DIR)/build.ninja:
	cmake -S . -B $(TSAN_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVANEX_TSAN=ON -DORVANEX_SANITIZE=OFF -DORVANEX_TESTS=ON

tsan: deps $(TSAN_DIR)/build.ninja
	cmake --build $(TSAN_DIR) -j $(JOBS) --target orvanex_thread_tests
	cd $(TSAN_DIR) && ctest -L tsan --output-on-failure -j $(JOBS)
