# The ways in. Everything that a machine lacks is installed first (tools/setup).
#   make              release build of the engine, the module and the package
#   make cornellbox   build, then render the Cornell box to cornellbox.png
#   make test         build, then run all tests; PRESET=asan or PRESET=tsan runs them under sanitizers
#   make bench        build, then the quick benchmarks
#   make docs         build, then write the reference of the node classes again (docs/reference)
#   make lint         format, spelling and static checks of what changed
#   make clean        remove the build
PRESET ?= release
JOBS ?= $(shell nproc)
PYTHONPATH_RELEASE := $(CURDIR)/build/python

ifeq ($(PRESET),release)
BUILD := build
else
BUILD := build/$(PRESET)
endif

.PHONY: all setup build cornellbox test bench docs lint clean

all: build

setup:
	@tools/setup

build: setup
	@grep -qsxF 'CMAKE_HOME_DIRECTORY:INTERNAL=$(CURDIR)' $(BUILD)/CMakeCache.txt && cmake --preset $(PRESET) || \
	 cmake --fresh --preset $(PRESET)    # new, or the folder was moved
	@cmake --build $(BUILD) --parallel $(JOBS)

cornellbox: override PRESET := release
cornellbox: override BUILD := build
cornellbox: build
	PYTHONPATH=$(PYTHONPATH_RELEASE) .venv/bin/python -m sarvo render cornellbox --spp 512 -o cornellbox.png

test: build
	@tools/test $(PRESET)

bench: override PRESET := release
bench: override BUILD := build
bench: build
	@cmake --build $(BUILD) --parallel $(JOBS) --target benchmarks
	@PYTHONPATH=$(PYTHONPATH_RELEASE) benchmarks/run

docs: build
	@$(BUILD)/tools/node_reference docs/reference

lint: setup
	@tools/lint

clean:
	rm -rf build dist
