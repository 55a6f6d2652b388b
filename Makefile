# Thin front door over CMake presets. `make run` and `make test` work on a fresh machine:
# they install what is missing first.
JOBS ?= $(shell nproc 2>/dev/null || sysctl -n hw.ncpu 2>/dev/null || echo 2)
ARGS ?= status

.PHONY: deps configure build run app screenshots test test-sanitize fuzz bench man install package format clean

deps:
	@scripts/install-deps

build/debug/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset debug

configure: deps build/debug/build.ninja

build: configure
	cmake --build --preset debug -j $(JOBS)

run: build
	./build/debug/cli/velmora $(ARGS)

app: configure
	cmake --build --preset debug -j $(JOBS) --target velmora-desktop velmora
	./build/debug/MacDevCorvel/velmora-desktop $(APP_ARGS)

# Every screen of a recorded Mac, rendered without a display, into build/screenshots/.
screenshots: configure
	cmake --build --preset debug -j $(JOBS) --target screenshots

test: build
	ctest --preset debug -j $(JOBS)

test-sanitize: deps
	cmake --preset asan-ubsan
	cmake --build --preset asan-ubsan -j $(JOBS)
	ctest --preset asan-ubsan -j $(JOBS)

# libFuzzer needs clang with its runtime (Debian: clang; macOS: Homebrew's llvm, not Apple's clang).
FUZZ_SECONDS ?= 600
FUZZ_CXX ?= $(if $(filter Darwin,$(shell uname -s)),$(shell brew --prefix llvm 2>/dev/null)/bin/clang++,clang++)
fuzz: deps
	cmake --preset fuzz -DCMAKE_CXX_COMPILER=$(FUZZ_CXX)
	cmake --build --preset fuzz -j $(JOBS)
	scripts/fuzz --seconds $(FUZZ_SECONDS) $(FUZZERS)

bench: deps
	cmake --preset release
	cmake --build --preset release -j $(JOBS)
	bench/compare-peers.sh

# The manual page and the bash, zsh and fish completions, written by velmora from its own options.
man: configure
	cmake --build --preset debug -j $(JOBS) --target velmora-docs
	mkdir -p build/man build/completions
	cp build/debug/man/velmora.1 build/man/velmora.1
	cp build/debug/completions/* build/completions/

# An optimised build installed under PREFIX (default /usr/local), and the release packages with
# their .sha256 files in build/release (Linux: .deb and .tar.gz; macOS: .pkg).
PREFIX ?= /usr/local
install: deps
	cmake --preset release -DCORVEL_BUILD_TESTS=OFF -DCORVEL_BUILD_BENCH=OFF
	cmake --build --preset release -j $(JOBS) --target velmora velmora-docs
	cmake --install build/release --prefix $(PREFIX)

package: deps
	cmake --preset release -DCORVEL_BUILD_TESTS=OFF -DCORVEL_BUILD_BENCH=OFF
	cmake --build --preset release -j $(JOBS) --target velmora velmora-docs
	cd build/release && cpack

format:
	find CorvelCore cli tests bench -name '*.h' -o -name '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
