# The front door. `make demo` and `make test` set up all they need on a fresh Debian machine.
MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)

.PHONY: help demo test release debug bench format format-check lint layering install clean setup setup-tests

help:
	@echo "make demo      build, make the example dictionary, render the example and show it"
	@echo "make test      build and run all tests, plain and under the address and undefined sanitizers"
	@echo "make release   the programs alone, in build/release/bin"
	@echo "make bench     the benchmarks"
	@echo "make tsan      all tests under the thread sanitizer"
	@echo "make format    format the sources; make lint  check them"
	@echo "make install   install the programs (DESTDIR, PREFIX)"

setup:
	@tools/setup build

setup-tests:
	@tools/setup tests

release: setup
	cmake --preset release -DLEXON_TESTS=OFF
	cmake --build --preset release --parallel $(JOBS)

demo: release
	@tools/demo build/release/bin

test: setup-tests layering
	@tools/test release
	@tools/test asan

debug tsan clang: setup-tests
	@tools/test $@

bench: setup-tests
	cmake --preset bench
	cmake --build --preset bench --parallel $(JOBS)
	@tools/bench build/bench/bin

layering:
	@tools/layering

SOURCES = $(shell git ls-files '*.cpp' '*.hpp')

format: setup-tests
	clang-format -i $(SOURCES)

format-check: setup-tests
	clang-format --dry-run --Werror $(SOURCES)

lint: setup-tests format-check layering
	cmake --preset clang
	run-clang-tidy -quiet -p build/clang '^$(CURDIR)/(src|bench)/'

PREFIX ?= /usr/local
install: release
	cmake --install build/release --prefix $(PREFIX)

clean:
	rm -rf build
