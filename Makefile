# The front door: on a fresh Debian machine, "make run" does everything from the packages on.
#   PRESET=debug|sanitizers   another build than release (CMakePresets.json)
#   WERROR=ON                 compiler warnings are errors
#   CMAKE_ARGS=-D...          more settings for the build, such as a deployment's
#   PREFIX=FOLDER             "make install" puts it there, and not into /usr/local
#   DESTDIR=FOLDER            in front of PREFIX, for what a package is made of
#   PARTS='kill io'           these parts of "make torture", and not kill, io, alloc and fuzz
#   SECONDS=N                 how long "make torture" runs each fuzzer (30)
#   SEED=N                    other inputs for its fuzzers (1, so that two runs try about the same)
#   FAIL=KIND                 "make run" fails: network, verification, configuration, disk, noanswer
SHELL := /bin/bash
.SHELLFLAGS := -o pipefail -ec
PRESET ?= release
PREFIX ?= /usr/local
PARTS ?= kill io alloc fuzz
SECONDS ?= 30
SEED ?= 1
build := build/$(PRESET)
jobs := $(shell nproc)
# Most cases wait more than they compute, some for minutes.
test_jobs := $(shell echo $$((2 * $$(nproc) > 4 ? 2 * $$(nproc) : 4)))

# Files in the checkout that are ours: tracked, or new and not ignored.
ours := git ls-files --cached --others --exclude-standard --
cxx_files = $(shell $(ours) '*.cc' '*.h' '*.c' '*.mm')
checked_folders := src deploy tools sandbox torture
shell_scripts = $(shell git grep --untracked -lE '^\#!.*\b(ba)?sh$$' -- ':!*.md' ':!*.cc')
# A folder as an absolute path, or nothing.
absolute = $(if $(1),"$$(realpath -ms -- '$(1)')")
version := $(shell sed -n 's/^project.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
# Without the commands, the counts of what is not ours, and the colours.
clang_tidy_findings = sed -E -e '/^clang-tidy|warnings? generated\.$$/d' -e 's/\x1b\[[0-9;]*m//g' \
	$(build)/clang-tidy.log

.DEFAULT_GOAL := help
.PHONY: help coming deps configure build package install docs rehearsal run rehearse test mac dist \
	torture bench coverage count lint clean lint-count lint-rooms lint-format lint-header lint-docs lint-man lint-shell \
	lint-commands lint-cppcheck lint-tidy

help:
	@echo 'make run       let the installer install in a rehearsal world, and show what happened'
	@echo 'make rehearse  let two applications install it and leave again, and check every step'
	@echo 'make test      build and run the tests'
	@echo 'make mac       the application, the library and the tools for macOS, in build/mac'
	@echo 'make torture   everything that can fail does, at every point, and a table says what survived'
	@echo 'make install   build and install the application, the tools and the client API library'
	@echo 'make dist      Debian packages, the source and their sums, in build/dist'
	@echo 'make docs      the reference of the client API as web pages, in build/docs'
	@echo 'make bench     build and run the benchmarks'
	@echo 'make coverage  which lines and branches of the engine the tests reach, by room'
	@echo 'make count     how large the parts are, and whether the tests have outgrown the code'
	@echo 'make lint      format, static analysis, scripts, the public header, documentation'
	@echo 'make deps      install the Debian packages that are missing (packages.txt)'
	@echo 'make clean     remove everything that was built'
	@echo
	@sed -n 's/^#   /  /p' Makefile

# Once, before the first build here.
coming:
	@[[ -e $(build)/build.ninja ]] || \
		echo 'The first time: the packages about 5 minutes where they are missing, the build about 2.'

deps:
	@tools/install_packages packages.txt

configure: deps
	@cmake --preset $(PRESET) $(if $(WERROR),-DVELNOR_WERROR=$(WERROR)) $(CMAKE_ARGS) | \
		sed -n '/deployment\|VELNOR/s/^-- //p'

build: coming configure
	@cmake --build --preset $(PRESET) --parallel $(jobs)

package: configure
	@cmake --build --preset $(PRESET) --parallel $(jobs) --target velnor_package

# Root builds nothing in somebody else's folder, where that one could not build any more.
install:
	@if [[ -O Makefile ]]; then $(MAKE) --no-print-directory package; fi
	@[[ -e $(build)/src/libvelnor-capi.so ]] || \
		{ echo "Nothing is built. Run this as the owner of this folder: make package" >&2; exit 1; }
	@folder=$(call absolute,$(DESTDIR))$(call absolute,$(PREFIX)); \
	while [[ ! -e $$folder ]]; do folder=$$(dirname -- "$$folder"); done; \
	[[ -w $$folder ]] || { echo "You may not write in $$folder. Run this as root (sudo make install)," \
		"or name a folder of your own: make install PREFIX=~/velnor" >&2; exit 1; }
	@DESTDIR=$(call absolute,$(DESTDIR)) cmake --install $(build) --prefix $(call absolute,$(PREFIX)) \
		$(if $(filter release deployment,$(PRESET)),--strip) | \
		sed -nE 's/^-- (Installing|Up-to-date): /  /p'
	@rm -f $(build)/install_manifest.txt
	@! grep -q '^VELNOR_PUBLIC_KEY:STRING=$$' $(build)/CMakeCache.txt || \
		echo 'It belongs to a demonstration deployment, with a key of its own: publish nothing with it.'
	@[[ '$(DESTDIR)' || $$EUID -ne 0 || '$(PREFIX)' != /usr?(/local) ]] || \
		echo 'So that programs find the library, run: ldconfig'

docs: deps
	@echo 'doxygen: build/docs/index.html'
	@mkdir -p build/docs
	@VERSION=$(version) doxygen docs/Doxyfile
	@tools/rooms draw

rehearsal: coming configure
	@cmake --build --preset $(PRESET) --parallel $(jobs) --target sandbox_world installer vnctl \
		vn-publish

run: rehearsal
	@sandbox/rehearse --keep --screen $(if $(FAIL),--fail $(FAIL)) $(build) install

rehearse: rehearsal
	@sandbox/rehearse $(build) lifetime

# Worlds by proot share the machine's ports, so there is one at a time.
test: build
	@if [[ $$(sandbox/enter --how) == bwrap ]]; then \
		ctest --preset $(PRESET) --parallel $(test_jobs); \
	else \
		echo 'User namespaces are refused here: the tests run in worlds by proot, one after the other.'; \
		status=0; ctest --preset $(PRESET) --parallel 1 || status=$$?; \
		echo 'Left out here, and why (tests/left_out); counted as skipped above:'; \
		[[ $$EUID -eq 0 ]] && who='all\|root' || who=all; \
		sed -n "/^#/d; s/^\([^ ]*\) \($$who\) /  \1: /p" tests/left_out; \
		exit $$status; \
	fi

mac:
	@mac/build $(CMAKE_ARGS)

dist:
	@tools/dist $(CMAKE_ARGS)

torture: configure
	@cmake --build --preset $(PRESET) --parallel $(jobs) --target velnor_torture
	@$(if $(filter fuzz,$(PARTS)),cmake --preset fuzz >/dev/null && \
		cmake --build --preset fuzz --parallel $(jobs))
	@SEED=$(SEED) torture/run $(build) $(SECONDS) $(PARTS)

bench: configure
	@cmake --build --preset $(PRESET) --parallel $(jobs) --target sandbox_world velnor_bench
	@sandbox/enter --build $(build) -- $(build)/bench/velnor_bench | tee build/bench.txt
	@bench/plot build/bench.txt build/bench.svg
	@echo 'The ratios as bars: build/bench.svg'

# The counts lie under the path of the build folder, and gcov wants them beside its notes in it.
coverage: export GCOV_PREFIX := $(CURDIR)/build/coverage/counts
coverage:
	@rm -rf build/coverage/counts
	@find build/coverage -name '*.gcda' -delete 2>/dev/null || true
	@$(MAKE) --no-print-directory test PRESET=coverage
	@torture/run build/coverage 0 alloc
	@cp -r '$(GCOV_PREFIX)$(CURDIR)/build/coverage/.' build/coverage
	@tools/coverage build/coverage

count:
	@tools/count

lint: lint-count lint-rooms lint-format lint-header lint-docs lint-man lint-shell lint-commands \
	lint-cppcheck lint-tidy

lint-format: deps
	@echo 'clang-format'
	@clang-format --dry-run --Werror $(cxx_files)

lint-count:
	@tools/count | tail -n 1

lint-rooms: deps
	@echo 'The arrows between the rooms of src'
	@tools/rooms check

lint-header: deps
	@echo 'The public header as C99, C11, C++11 and C++20'
	@for language in 'c -std=c99' 'c -std=c11' 'c++ -std=c++11' 'c++ -std=c++20'; do \
		gcc -pedantic -Wall -Wextra -Werror -fsyntax-only -x $$language include/velnor/capi.h; \
	done

lint-docs: docs

# groff's exit status says nothing about warnings.
lint-man: deps
	@echo 'groff'
	@for page in docs/man/*.[1-9]; do \
		groff -t -man -Tutf8 -ww -z "$$page" 2>&1 | { ! grep .; }; \
	done

lint-shell: deps
	@echo 'shellcheck'
	@shellcheck $(shell_scripts)

lint-commands: deps
	@echo 'The commands in the documentation'
	@tools/commands check

lint-cppcheck: deps
	@echo 'cppcheck'
	@cppcheck --quiet -j $(jobs) --language=c++ --std=c++20 --error-exitcode=1 --inline-suppr \
		--enable=warning,performance,portability --suppress=missingInclude \
		-I src -I include -I tools -I deploy $(checked_folders)

lint-tidy: configure
	@echo 'clang-tidy'
	@$(ours) $(checked_folders:=/*.cc) | xargs run-clang-tidy -quiet -j $(jobs) -p $(build) \
		>$(build)/clang-tidy.log 2>&1 || { $(clang_tidy_findings); exit 1; }

clean:
	rm -rf build
