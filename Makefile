# Two commands do all the set-up: `make demo` and `make test`.
# Both install what a fresh machine lacks, build, and run.

JOBS    ?= $(shell nproc)
CMAKE_GEN = -G Ninja
# WERROR=1 turns compiler warnings into errors (the CI runs do): `make test WERROR=1`;
# WERROR=0 turns it off again; unset, a build directory keeps what it was configured with.
WERROR_OPT = $(if $(WERROR),-DBRD_WERROR=$(if $(filter 1 ON on yes,$(WERROR)),ON,OFF))
PKGS     = cmake ninja-build g++ libgtest-dev libgmock-dev libbenchmark-dev clang clang-format \
           clang-tidy python3-can python3-serial can-utils srecord

.PHONY: all deps build test test-asan test-tsan demo bench fuzz format format-check tidy clean

all: build

# Install the build tools and test libraries when any is missing.
deps:
	@missing=""; for p in $(PKGS); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -n "$$missing" ]; then \
	  echo "installing:$$missing"; \
	  apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y $$missing; \
	fi

# Configured on every run (quick when nothing changed) so WERROR takes effect on an
# existing build directory too.
build: deps
	cmake -S . -B build $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(WERROR_OPT)
	cmake --build build -j $(JOBS)

test: build
	ctest --test-dir build --output-on-failure -j $(JOBS)

test-asan: deps
	cmake -S . -B build-asan $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DBRD_SANITIZE=address,undefined \
	  $(WERROR_OPT)
	cmake --build build-asan -j $(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir build-asan --output-on-failure -j $(JOBS)

test-tsan: deps
	cmake -S . -B build-tsan $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DBRD_SANITIZE=thread $(WERROR_OPT)
	cmake --build build-tsan -j $(JOBS)
	TSAN_OPTIONS=halt_on_error=1 ctest --test-dir build-tsan --output-on-failure -j $(JOBS)

demo: build
	./scripts/demo.sh build

bench: build
	./scripts/bench.sh build

build-fuzz/build.ninja: | deps
	CXX=clang++ cmake -S . -B build-fuzz $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF

# FUZZ_SECONDS: how long each target runs (`make fuzz FUZZ_SECONDS=10` in CI).
FUZZ_SECONDS ?= 30
fuzz: deps build-fuzz/build.ninja
	cmake --build build-fuzz -j $(JOBS)
	FUZZ_SECONDS=$(FUZZ_SECONDS) ./scripts/fuzz.sh build-fuzz

# clang-tidy (checks in .clang-tidy) over the programs' sources, through the build's
# compile database; tests, benchmarks and fuzz targets are left out.
tidy: build
	run-clang-tidy -p build -j $(JOBS) -quiet '^$(CURDIR)/(lib|core|handlers|src|sim)/'

format:
	clang-format -i $$(git ls-files '*.cpp' '*.h')

# Fails, naming the places, when a tracked source is not formatted.
format-check: deps
	clang-format --dry-run -Werror $$(git ls-files '*.cpp' '*.h')

clean:
	rm -rf build build-asan build-tsan build-fuzz
