# The commands that people type. Each installs what the machine lacks and builds what it needs.
.PHONY: run calibration-demo test bench screenshots check tidy install-packages clean

run: build/release/bin/torvell.stamp
	@scripts/demo build/release/bin/torvell

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
	cmake --build --preset dev --target dialog_screenshots
	scripts/screenshots build/dev

# What CI checks beside the tests: the folder graph and clang-tidy.
check: install-packages
	scripts/check_floors

tidy: install-packages
	cmake --preset clang
	scripts/tidy build/clang

# Always asks the build tool, which knows what is out of date; the output is kept for failures only.
build/release/bin/torvell.stamp: install-packages
	@cmake --preset release > /dev/null
	@cmake --build --preset release

install-packages:
	@scripts/install

clean:
	rm -rf build
