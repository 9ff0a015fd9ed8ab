# Two commands do all the set-up: `make demo` and `make test`.
# Both install what a fresh machine lacks, build, and run.

JOBS    ?= $(shell nproc)
CMAKE_GEN = -G Ninja
PKGS     = cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev clang clang-format \
           python3-can can-utils srecord

.PHONY: all deps build test test-asan test-tsan demo bench fuzz format clean

all: build

# Install the build tools and test libraries when any is missing.
deps:
	@missing=""; for p in $(PKGS); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y $$missing; \
	fi

build/build.ninja: | deps
	cmake -S . -B build $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps build/build.ninja
	cmake --build build -j $(JOBS)

test: build
	ctest --test-dir build --output-on-failure -j $(JOBS)

build-asan/build.ninja: | deps
	cmake -S . -B build-asan $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DBRD_SANITIZE=address,undefined

test-asan: deps build-asan/build.ninja
	cmake --build build-asan -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir build-asan --output-on-failure -j $(JOBS)

build-tsan/build.ninja: | deps
	cmake -S . -B build-tsan $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DBRD_SANITIZE=thread

test-tsan: deps build-tsan/build.ninja
	cmake --build build-tsan -j $(JOBS)
	TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build-tsan --output-on-failure -j $(JOBS)

demo: build
	./scripts/demo.sh build

bench: build
	./scripts/bench.sh build

build-fuzz/build.ninja: | deps
	CXX=clang++ cmake -S . -B build-fuzz $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF

fuzz: deps build-fuzz/build.ninja
	cmake --build build-fuzz -j $(JOBS)
	./scripts/fuzz.sh build-fuzz

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf build build-asan build-tsan build-fuzz
