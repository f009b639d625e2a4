# The commands of the README. Everything here can be called again at any time; what is done already
# is not done again.

PRESET ?= release
MODEL ?=
SIZE ?=
JOBS ?= $(shell nproc)

build_dir := $(CURDIR)/build/$(PRESET)
ruby := $(CURDIR)/.deps/ruby/bin/ruby

.DEFAULT_GOAL := help
.PHONY: help setup build demo test bench env clean

help:
	@echo "make demo               exports the sample house to the renderer and draws what arrived"
	@echo "make demo MODEL=path    the same with a model file of your own"
	@echo "make test               runs all tests"
	@echo "make bench              measures the parts and whole exports, and writes out/bench.json"
	@echo "make bench SIZE=full    the same with models of 4 million faces (12 GB of memory)"
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

bench: build
	@cmake -DQUELLIX_BUILD_BENCH=ON "$(build_dir)" >"$(CURDIR)/.deps/log/configure-bench.log" 2>&1 || \
	  { echo "bench: CMake could not configure; see .deps/log/configure-bench.log" >&2; exit 1; }
	@cmake --build --preset $(PRESET) --parallel $(JOBS) --target bench_report
	@"$(build_dir)/bench/bench_report" "$(CURDIR)/out/bench.json" $(SIZE)

env:
	@echo "RUBY=$(ruby)"
	@echo "EXTENSION_DIR=$(build_dir)/extension"
	@echo "MODELHOST_DIR=$(build_dir)/modelhost"
	@echo "KVAPP_DIR=$(build_dir)/renderer"

clean:
	@rm -rf build out
