# The front door. `make demo` and `make test` set up all they need on a fresh Debian machine.
MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)

.PHONY: help demo test release debug bench fuzz coverage endurance format format-check lint layering docs screenshots install package clean setup setup-tests setup-package

help:
	@echo "make demo      build, make the example dictionaries, render the examples and show them"
	@echo "make test      build and run all tests, plain and under the address and undefined sanitizers"
	@echo "make release   the programs alone, in build/release/bin"
	@echo "make bench     the benchmarks"
	@echo "make fuzz      each fuzz target for TIME seconds (60; TARGETS=\"rules run\" for some of them)"
	@echo "make coverage  which lines and branches of the core the tests reach"
	@echo "make endurance a run over SENTENCES (1000000) sentences: memory, files and threads must not grow"
	@echo "make tsan      all tests under the thread sanitizer"
	@echo "make format    format the sources; make lint  check them"
	@echo "make docs      the manual as a site, in build/docs"
	@echo "make screenshots  the pictures of the dialogs, in docs/images"
	@echo "make install   install programs, manual and examples (DESTDIR, PREFIX)"
	@echo "make package   Debian packages, in build/packages"

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

TIME ?= 60
fuzz:
	@tools/setup fuzz
	@tools/fuzz $(TIME) $(TARGETS)

coverage: setup-tests
	@tools/coverage

SENTENCES ?= 1000000
endurance: setup-tests
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target endurance
	build/release/bin/endurance $(SENTENCES)

layering:
	@tools/layering

SOURCES = $(shell git ls-files '*.cpp' '*.hpp')

format: setup-tests
	clang-format -i $(SOURCES)

format-check: setup-tests
	clang-format --dry-run --Werror $(SOURCES)

lint: setup-tests format-check layering
	cmake --preset clang
	run-clang-tidy -quiet -p build/clang '^$(CURDIR)/(src|bench|fuzz)/'
	@tools/cppcheck

docs:
	@tools/setup docs
	@tools/docs

screenshots: setup-tests
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target lexon-screenshots
	build/release/bin/lexon-screenshots docs/images

PREFIX ?= /usr/local
install: release
	cmake --install build/release --prefix $(PREFIX)

# What a package is made with comes first, so that the windowed program is in.
setup-package:
	@tools/setup package

package: setup-package release
	cpack --config build/release/CPackConfig.cmake -B build/packages

clean:
	rm -rf build
