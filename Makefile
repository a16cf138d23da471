# The two commands a fresh Debian 12 machine needs:
#   make run    build and start the program (against the virtual meter when no meter is attached)
#   make test   build and pass the tests
# Both install the Debian packages they need first.

JOBS ?= $(shell nproc)

.PHONY: run test deps build package asan-test fuzz-smoke bench bench-sound clean

deps:
	scripts/install-deps.sh build

build: deps
	cmake --preset default
	cmake --build --preset default -j $(JOBS)

run: build
	scripts/run-demo.sh build/bin $(ARGS)

test: build
	ctest --preset default -j $(JOBS)

# build/lv-analog_<version>_amd64.deb, checked by lintian.
package: build
	scripts/install-deps.sh package
	rm -f build/lv-analog_*_amd64.deb
	cmake --build --preset default --target package
	lintian --fail-on error build/lv-analog_*_amd64.deb

asan-test: deps
	cmake --preset asan
	cmake --build --preset asan -j $(JOBS)
	ctest --preset asan -j $(JOBS)

fuzz-smoke:
	scripts/install-deps.sh ci
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	cmake --build --preset fuzz --target fuzz-smoke

# The benchmarks, then the program's CPU in a real window (bench/cpu_live.sh;
# shorter cases when CI is set).
bench: build
	cmake --build --preset default --target bench
	bench/cpu_live.sh build/bin

# Long (about 15 minutes): hours of sound made on the spot, played and recorded.
bench-sound: build
	cmake --build --preset default --target bench-sound

clean:
	rm -rf build build-asan build-fuzz
