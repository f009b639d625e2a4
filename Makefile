# The commands of the README. Everything here can be called again at any time; what is done already
# is not done again.

PRESET ?= release
MODEL ?=
SIZE ?=
JOBS ?= $(shell nproc)

build_dir := $(CURDIR)/build/$(PRESET)
ruby := $(CURDIR)/.deps/ruby/bin/ruby

.DEFAULT_GOAL := help
.PHONY: help setup build demo live test bench soak fuzz env clean
.PHONY: windows-setup windows windows-test demo-windows package

help:
	@echo "make demo               exports the sample house to the renderer and draws what arrived"
	@echo "make demo MODEL=path    the same with a model file of your own"
	@echo "make live               shows the sample house in a browser while a Ruby console edits it"
	@echo "make live MODEL=path    the same with a model file of your own"
	@echo "make test               runs all tests"
	@echo "make bench              measures the parts and whole exports, and writes out/bench.json"
	@echo "make bench SIZE=full    the same with models of 4 million faces (12 GB of memory)"
	@echo "make soak SECONDS=n     the long tests: 500 kills of the renderer, 2,000 reloads, 5,000 live"
	@echo "                        syncs of random edits, hostile models;"
	@echo "                        kills, reloads and syncs end after n seconds each (1800)"
	@echo "make fuzz SECONDS=n     what cannot be trusted under libFuzzer, n seconds a target (60)"
	@echo "make windows            builds all of it for Windows x64 (see docs/windows.md)"
	@echo "make windows-test       runs the tests of that under Wine"
	@echo "make demo-windows       the demo with the extension and the renderer under Wine"
	@echo "make package            the plug-in as an .rbz, with the extension for Windows"
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

live:
	@scripts/setup.sh live
	@$(MAKE) --no-print-directory build
	@EXTENSION_DIR="$(build_dir)/extension" MODELHOST_DIR="$(build_dir)/modelhost" \
	  KVAPP_DIR="$(build_dir)/renderer" PLUGIN_DIR="$(CURDIR)/plugin" \
	  "$(ruby)" -E UTF-8 examples/live.rb $(if $(MODEL),"$(MODEL)")

test: build
	@ctest --preset $(PRESET)

bench: build
	@cmake -DQUELLIX_BUILD_BENCH=ON "$(build_dir)" >"$(CURDIR)/.deps/log/configure-bench.log" 2>&1 || \
	  { echo "bench: CMake could not configure; see .deps/log/configure-bench.log" >&2; exit 1; }
	@cmake --build --preset $(PRESET) --parallel $(JOBS) --target bench_report
	@"$(build_dir)/bench/bench_report" "$(CURDIR)/out/bench.json" $(SIZE)

soak_ruby := EXTENSION_DIR="$(build_dir)/extension" MODELHOST_DIR="$(build_dir)/modelhost" \
  PLUGIN_DIR="$(CURDIR)/plugin" LIVE_ROUNDS=5000 \
  KVAPP_DIR="$(build_dir)/renderer" SOAK_SECONDS="$(or $(SECONDS),1800)" KILLS=500 CYCLES=2000 ROUNDS=1000 \
  HOST_ROUNDS=40 EMPTY_GROUPS=1000000 TEXTURE_SIDE=16384 FACE_POINTS=100000 "$(ruby)" -W -E UTF-8
soak: build
	@for name in kill trouble hostile left_out reload random_reload random_live hosts; do \
	  $(soak_ruby) tests/soak/$${name}_test.rb || exit 1; \
	done
	@QUELLIX_MESH_PER_PAINT=1 $(soak_ruby) tests/soak/random_reload_test.rb

fuzz:
	@scripts/setup.sh fuzz
	@cmake -S . -B build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
	  -DCMAKE_CXX_COMPILER=clang++ -DQUELLIX_LIBFUZZER=ON \
	  -DQUELLIX_SANITIZE=address,undefined,fuzzer-no-link >"$(CURDIR)/.deps/log/configure-fuzz.log" 2>&1 || \
	  { echo "fuzz: CMake could not configure; see .deps/log/configure-fuzz.log" >&2; exit 1; }
	@cmake --build build/fuzz --parallel $(JOBS) --target fuzz_toplugin fuzz_toapp fuzz_scene fuzz_page
	@cd build/fuzz && for name in toplugin toapp scene page; do \
	  mkdir -p corpus-$$name; \
	  FUZZ_SEED_FOLDER=seeds-$$name tests/fuzz/fuzz_$$name -max_total_time=$(or $(SECONDS),60) \
	    -timeout=20 -rss_limit_mb=4096 -max_len=16000 -verbosity=0 -print_final_stats=1 \
	    corpus-$$name seeds-$$name || exit 1; \
	done

windows_build := $(CURDIR)/build/windows
wine := $(windows_build)/run-under-wine
windows-setup: setup
	@scripts/setup-windows.sh

windows: windows-setup
	@cmake --preset windows >"$(CURDIR)/.deps/log/configure-windows.log" 2>&1 || \
	  { echo "windows: CMake could not configure; see .deps/log/configure-windows.log" >&2; exit 1; }
	@cmake --build --preset windows --parallel $(JOBS)

windows-test: PRESET := release
windows-test: build windows
	@ctest --preset windows

demo-windows: PRESET := release
demo-windows: build windows
	@EXTENSION_DIR="Z:$(windows_build)/extension" MODELHOST_DIR="Z:$(windows_build)/modelhost" \
	  KVAPP_DIR="Z:$(windows_build)/renderer" OUT_DIR="Z:$(CURDIR)/out/windows" KVAPP_PICTURE=0 \
	  "$(wine)" "$(CURDIR)/.deps/windows/ruby/bin/ruby.exe" -E UTF-8 "Z:$(CURDIR)/examples/live_link.rb" \
	  $(if $(MODEL),"Z:$(abspath $(MODEL))")
	@"$(CURDIR)/build/release/renderer/KvApp/kvpicture" out/windows/scene.glb out/windows/picture.png
	@echo "picture     out/windows/picture.png"

package: windows
	@cmake --build --preset windows --target package >"$(CURDIR)/.deps/log/package.log" || \
	  { echo "package: no archive was made; see .deps/log/package.log" >&2; exit 1; }
	@ls out/quellix-*-windows-x64.rbz

env:
	@echo "RUBY=$(ruby)"
	@echo "EXTENSION_DIR=$(build_dir)/extension"
	@echo "MODELHOST_DIR=$(build_dir)/modelhost"
	@echo "KVAPP_DIR=$(build_dir)/renderer"
	@echo "PLUGIN_DIR=$(CURDIR)/plugin"

clean:
	@rm -rf build out
