# The short way to the usual things; cmake and the scripts do the work.
BUILD := build/release

.PHONY: help build demo test check-long fuzz bench format tidy install-packages

help:
	@echo 'make demo     build the tool and stitch the demo picture'
	@echo 'make test     build everything with g++ and run all tests'
	@echo 'make check-long  the checks that go through everything there is to go through (some minutes)'
	@echo 'make fuzz     feed every door what nobody wrote, TIME=20 seconds each'
	@echo 'make bench    measure against FFmpeg and OpenCV, tables and plot in out/bench/ (some minutes)'
	@echo 'make build    build the libraries, the tool and the tests'
	@echo 'make format   lay the sources out with clang-format'
	@echo 'make tidy     check the sources with clang-tidy'
	@echo
	@echo 'Packages that are missing are installed first (Debian 12, as root or with sudo).'

install-packages:
	@scripts/install_packages.sh build

build: install-packages
	@cmake --preset release
	@cmake --build --preset release

# Where npm isn't there yet, the demo does without the viewer: its packages are more than all others, and it needs a registry.
demo: VIEWER := $(and $(shell command -v node),$(shell command -v npm))
demo:
	@scripts/install_packages.sh $(if $(VIEWER),build,tool)
	@cmake --preset release $(if $(VIEWER),,-D BISEAM_BUILD_VIEWER=OFF)
	@cmake --build --preset release --target biseam_tool
	@scripts/demo.sh $(BUILD) $(if $(VIEWER),view)

TESTS :=
test: build
	@scripts/test.sh release $(TESTS)

check-long: build
	@scripts/install_packages.sh cross
	@cmake --preset release
	@cmake --build --preset release
	@scripts/test.sh release -C Long -R '\.long$$'

TIME := 20
fuzz:
	@scripts/install_packages.sh build check
	@scripts/fuzz.sh $(TIME)

bench:
	@scripts/bench.sh

format:
	@scripts/install_packages.sh check
	@git ls-files -z '*.c' '*.h' '*.cpp' '*.hpp' | xargs -0 clang-format -i

tidy:
	@scripts/install_packages.sh build check
	@scripts/tidy.sh
