# Set-up and everyday commands. `make test` works on a fresh Debian machine:
# it installs the missing packages, configures, builds and runs every test.

PACKAGES := cmake ninja-build g++ make pkg-config libgtest-dev libgmock-dev \
            libbenchmark-dev libpugixml-dev libzip-dev zlib1g-dev nettle-dev \
            libcli11-dev nlohmann-json3-dev tmux
FUZZ_PACKAGES := clang libclang-rt-14-dev

BUILD_DIR ?= build
ASAN_BUILD_DIR ?= build-asan
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: all deps fuzz-deps configure build test test-sanitize demo bench fuzz install clean

all: build

# Installs only the packages that are not present yet.
deps:
	@missing=""; \
	for p in $(PACKAGES) $(EXTRA_PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  $(SUDO) apt-get update && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y $$missing; \
	fi

configure: deps
	cmake -S . -B $(BUILD_DIR) -G Ninja $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

# The whole suite again with AddressSanitizer and UndefinedBehaviorSanitizer.
test-sanitize:
	$(MAKE) test BUILD_DIR=$(ASAN_BUILD_DIR) CMAKE_FLAGS="-DVQ_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug $(CMAKE_FLAGS)"

demo: build
	@if [ -x $(BUILD_DIR)/bin/vqcam ]; then \
	  $(BUILD_DIR)/bin/vqcam --simulate info , list , get Width , set Width=1024 , get Width; \
	else \
	  echo "vqcam is not part of this build yet"; exit 2; \
	fi

bench:
	$(MAKE) build BUILD_DIR=build-bench CMAKE_FLAGS="-DVQ_BUILD_BENCH=ON -DVQ_BUILD_TESTS=OFF -DCMAKE_BUILD_TYPE=Release"

fuzz:
	$(MAKE) build EXTRA_PACKAGES="$(FUZZ_PACKAGES)" BUILD_DIR=build-fuzz \
	  CMAKE_FLAGS="-DVQ_BUILD_FUZZ=ON -DVQ_BUILD_TESTS=OFF -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++"

install: build
	cmake --install $(BUILD_DIR) --prefix $(or $(PREFIX),/usr/local)

clean:
	rm -rf $(BUILD_DIR) $(ASAN_BUILD_DIR) build-bench build-fuzz
