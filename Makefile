# The commands that people type. Each installs what the machine lacks and builds what it needs.
.PHONY: run desktop package calibration-demo test bench screenshots check tidy install-packages clean

run: build/release/bin/torvell.stamp
	@scripts/demo build/release/bin/torvell

# Rehearses a whole calibration on the simulator.
# The window on a demonstration: simulated instrument, made-up constants, a user of each level.
desktop: build/release/bin/torvell.stamp
	@build/release/bin/torvell --simulate --clock x20 desktop

# build/release/torvell_*.deb
package: build/release/bin/torvell.stamp
	@cd build/release && cpack

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
