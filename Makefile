# The commands of the README. Everything here can be called again at any time; what is done already
# is not done again.

PRESET ?= release
MODEL ?=
JOBS ?= $(shell nproc)

build_dir := $(CURDIR)/build/$(PRESET)
ruby := $(CURDIR)/.deps/ruby/bin/ruby

.DEFAULT_GOAL := help
.PHONY: help setup build demo test env clean

help:
	@echo "make demo               exports the sample house to the renderer and draws what arrived"
	@echo "make demo MODEL=path    the same with a model file of your own"
	@echo "make test               runs all tests"
	@echo "make env                prints where Ruby and the built folders are, for scripts"
	@echo "PRESET=asan make test   the same tests with the address and undefined-behaviour sanitizers"

setup:
	@scripts/setup.sh

build: setup
	@cmake --preset $(PRESET) >"$(CURDIR)/.deps/log/configure-$(PRESET).log" 2>&1 || \
	  { echo "build: CMake could not configure; see .deps/log/configure-$(PRESET).log" >&2; exit 1; }
	@cmake --build --preset $(PRESET) --parallel $(JOBS)

demo: build
	@EXTENSION_DIR="$(build_dir)/extension" MODELHOST_DIR="$(build_dir)/modelhost" \
	  KVAPP_DIR="$(build_dir)/renderer" OUT_DIR="$(CURDIR)/out" \
	  "$(ruby)" examples/live_link.rb $(if $(MODEL),"$(MODEL)")

test: build
	@ctest --preset $(PRESET)

env:
	@echo "RUBY=$(ruby)"
	@echo "EXTENSION_DIR=$(build_dir)/extension"
	@echo "MODELHOST_DIR=$(build_dir)/modelhost"
	@echo "KVAPP_DIR=$(build_dir)/renderer"

clean:
	@rm -rf build out
