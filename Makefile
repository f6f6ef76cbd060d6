# The front door. `make demo` and `make test` set up all they need on a fresh Debian machine.
MAKEFLAGS += --no-print-directory
JOBS ?= $(shell nproc)

.PHONY: help demo test check-all golden programs release debug bench bench-amr fuzz coverage endurance format format-check lint layering docs web screenshots translations install package clean setup

help:
	@echo "make demo      build, make the example dictionaries, render the examples and show them"
	@echo "make test      build under the sanitizers and run the tests of the core and its programs; some minutes"
	@echo "make check-all a release build and all tests, and the rest of those under the sanitizers: the workbench, refused memory"
	@echo "make golden    write the expected files of whole runs anew: read every line that changes"
	@echo "make programs  the programs alone, in build/release/bin"
	@echo "make bench     the benchmarks"
	@echo "make bench-amr DATA=\"bank.txt ...\" English from a meaning bank, measured (FRAMES, FORMS, WORDNET: word sources)"
	@echo "make fuzz      each fuzz target for TIME seconds (60; TARGETS=\"rules run\" for some of them)"
	@echo "make coverage  which lines and branches of the core the tests reach"
	@echo "make endurance RUNS (10000) runs of three cases in one process: memory and files must not grow"
	@echo "make tsan      all tests under the thread sanitizer"
	@echo "make format    format the sources; make lint  check them"
	@echo "make docs      the manual as a site, in build/docs"
	@echo "make web       the editor of the page of lexon-lab serve (npm); programs built afterwards have it in them"
	@echo "make screenshots  the pictures of the dialogs and of the page, in docs/images"
	@echo "make translations  the texts of the dialogs, for their translators"
	@echo "make install   install programs, manual and examples (DESTDIR, PREFIX)"
	@echo "make package   Debian packages, in build/packages"
	@echo "make release   the source as a tarball, in build"

setup:
	@tools/setup build

# setup-NAME: what tools/setup knows by this name.
setup-%:
	@tools/setup $*

programs: setup
	cmake --preset release -DLEXON_TESTS=OFF
	cmake --build --preset release --parallel $(JOBS)

demo: programs
	@tools/demo build/release/bin

test: setup-tests layering
	@tools/test asan core

check-all: setup-check layering docs web
	@tools/test release all
	@tools/test asan rest

golden: setup-tests
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target tested-programs
	tests/programs/golden.py build/release/bin --update
	tests/programs/manual.py build/release/bin --update

debug tsan: setup-tests
	@tools/test $@

clang: setup-clang
	@tools/test $@

bench: setup-bench
	cmake --preset bench
	cmake --build --preset bench --parallel $(JOBS)
	@tools/bench build/bench/bin

# DATA: PENMAN or UMR files. EVERY=4 scores every fourth sentence apart. FRAMES, FORMS and WORDNET name what a dictionary is made of; see docs/import.md.
bench-amr:
	@test -n "$(DATA)" || { echo "make bench-amr wants DATA=\"bank.txt ...\""; exit 2; }
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target lexon lexon-dict lexon-import
	@bench/amr/bench_amr.py build/release/bin $(DATA) $(if $(EVERY),--every $(EVERY)) $(if $(FRAMES),--frames $(FRAMES)) $(if $(FORMS),--forms $(FORMS)) \
	  $(if $(WORDNET),--wordnet $(WORDNET)) $(if $(DICTIONARY),--dictionary $(DICTIONARY))

TIME ?= 60
fuzz: setup-fuzz
	@tools/fuzz $(TIME) $(TARGETS)

coverage: setup-coverage
	@tools/coverage

RUNS ?= 10000
endurance: setup-tests
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target failures_memory_test
	LEXON_RUNS=$(RUNS) build/release/bin/failures_memory_test --gtest_filter=Endurance.*

layering:
	@tools/layering

SOURCES = $(shell git ls-files '*.cpp' '*.hpp' '*.h')

format: setup-lint
	clang-format -i $(SOURCES)

format-check: setup-lint
	@clang-format --dry-run --Werror $(SOURCES)

lint: setup-lint format-check layering
	cmake --preset clang
	run-clang-tidy -quiet -p build/clang '^$(CURDIR)/(src|bench|fuzz)/'
	@tools/cppcheck

docs: setup-docs
	@tools/docs

# Without it the page has plain text areas.
web: setup-web
	@tools/web build/web

screenshots: setup-gui setup-browser web
	cmake --preset release
	cmake --build --preset release --parallel $(JOBS) --target lexon-screenshots lexon-lab
	build/release/bin/lexon-screenshots docs/images
	@for pictures in screenshots view_shots; do \
	  tools/web-test build/web-test build/release/bin tests/web/$$pictures.mjs docs/images; done

# Takes changes of texts in the windows over into the translations, where they wait for a translator.
translations: setup-gui
	cmake --preset release
	cmake --build --preset release --target translations

PREFIX ?= /usr/local
install: programs
	cmake --install build/release --prefix $(PREFIX)

# What a package is made with comes first, so that the windowed program and the editor of the page are in.
package: setup-package docs web
	cmake --preset release -DLEXON_TESTS=OFF -DLEXON_PACKAGES=ON
	cmake --build --preset release --parallel $(JOBS)
	cpack --config build/release/CPackConfig.cmake -B build/packages

# Without the history a build has to be told who made it and when.
release:
	@tools/release-tarball

clean:
	rm -rf build
