# The commands that people type. Each installs what the machine lacks and builds what it needs.
.PHONY: run desktop package calibration-demo test bench screenshots soak mutants nightly build-soak \
        fuzz coverage check tidy install-packages clean

run: build/release/bin/torvell.stamp
	@scripts/demo build/release/bin/torvell

# The window on a demonstration: simulated instrument, made-up constants, a user of each level.
desktop: build/release/bin/torvell.stamp
	@build/release/bin/torvell --simulate --clock x20 desktop

# build/release/torvell_*.deb
package: build/release/bin/torvell.stamp
	@cd build/release && cpack

# Rehearses a whole calibration on the simulator.
calibration-demo: build/release/bin/torvell.stamp
	@scripts/calibration-demo build/release/bin/torvell

test: install-packages
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev

bench: install-packages
	cmake --preset bench
	cmake --build --preset bench
	scripts/bench build/bench

# Pictures of every window, to be looked at.
screenshots: install-packages
	cmake --preset dev
	cmake --build --preset dev --target dialog_screenshots window_screenshots
	scripts/screenshots build/dev

# Simulated trays with faults, see docs/reliability.md. SEEDS=A..B chooses others.
SEEDS ?= 1..20000
soak: build-soak
	build/soak/bin/soak --seeds $(SEEDS)
	build/soak/bin/soak --profile tray --seeds 1..200

# How many seeds each fault of tests/mutants takes; fails if one is not found.
mutants: build-soak
	scripts/mutants build/soak

# Random input for everything that reads bytes or texts, FUZZ_SECONDS for each target.
FUZZ_SECONDS ?= 20
fuzz: install-packages
	cmake --preset fuzz
	cmake --build --preset fuzz
	scripts/fuzz build/fuzz $(FUZZ_SECONDS)

# Which lines and branches of the measured floors the tests reach, and what nothing reached.
coverage: install-packages
	cmake --preset coverage
	cmake --build --preset coverage
	rm -rf build/coverage/profiles
	ctest --preset coverage
	scripts/coverage build/coverage --uncovered

# For a quiet machine: hours of new seeds, kills and inputs.
nightly: build-soak
	build/soak/bin/soak --minutes 240 --first $$(date +%s)
	build/soak/bin/soak --profile tray --minutes 120 --first $$(date +%s)
	scripts/mutants build/soak
	cmake --preset dev
	cmake --build --preset dev --target torvell rvx reliability_test
	tests/reliability/kill_rounds.py build/dev/bin/torvell --rounds 2000 --seed $$(date +%s)
	RVX_EXHAUSTIVE=1 build/dev/bin/reliability_test
	$(MAKE) fuzz FUZZ_SECONDS=1800

build-soak: install-packages
	@cmake --preset soak > /dev/null
	@cmake --build --preset soak

# What can be checked without a build: the tables of ARCHITECTURE.md, the format, the scripts' syntax, the
# patches of the planted faults.
check: install-packages
	scripts/check_floors
	scripts/check_format
	scripts/check_scripts
	scripts/mutants --check

# clang-tidy over the whole tree: a quarter of an hour.
tidy: install-packages
	cmake --preset asan
	cmake --build --preset asan
	scripts/tidy build/asan

# Always asks the build tool, which knows what is out of date; the output is kept for failures only.
build/release/bin/torvell.stamp: install-packages
	@cmake --preset release > /dev/null
	@cmake --build --preset release

install-packages:
	@scripts/install

clean:
	rm -rf build
