# make demo    builds the command and reports the timing of a routed design
# make test    builds and runs all tests, plain and under the sanitizers
# make fuzz    feeds hostile inputs to the readers and the engine, each for FUZZ_SECONDS (60)
# make format, lint, docs, coverage, build-times    see CONTRIBUTING.md
# The first two install what they need on Debian 12.

.PHONY: demo test fuzz bench format lint docs build-times coverage setup clean

demo: setup
	cmake --preset dev
	cmake --build --preset dev --target vorlen_command
	build/dev/vorlen analyze --sdf examples/uart_fir/uart_fir.sdf --sdc examples/uart_fir/uart_fir.sdc \
	    --netlist examples/uart_fir/uart_fir.routed.json.gz --paths 1 --allow-violations

test: setup
	cmake/test.sh dev asan

fuzz: setup
	@command -v clang++-16 >/dev/null || { echo "make fuzz: clang 16 is not installed (apt-get install clang-16 libclang-rt-16-dev)"; exit 1; }
	cmake --preset fuzz
	cmake --build --preset fuzz --target fuzz

bench: setup
	cmake --preset release
	cmake --build --preset release --target benches
	build/release/bench/engine_bench build/bench.json
	@set -e; for bench in build/release/bench/*_bench; do \
	    case $$bench in */engine_bench) ;; *) echo "== $$bench"; $$bench ;; esac; \
	done

format:
	@command -v clang-format >/dev/null || { echo "make format: clang-format is not installed (apt-get install clang-format)"; exit 1; }
	cmake/sources.sh | xargs clang-format -i

# Only some places: make lint LINT="model cli/Options.cpp"
lint: setup
	cmake --preset dev
	cmake/lint.sh $(LINT)

docs:
	@command -v doxygen >/dev/null || { echo "make docs: doxygen is not installed (apt-get install doxygen)"; exit 1; }
	rm -rf build/docs && mkdir -p build/docs
	doxygen cmake/Doxyfile
	@echo "build/docs/html/index.html"

# Of another build: make build-times PRESET=release
build-times:
	@cmake/build_times.sh $(or $(PRESET),dev)

coverage: setup
	cmake --preset coverage
	cmake --build --preset coverage
	cmake --build --preset coverage --target coverage

setup:
	@cmake/setup.sh

clean:
	rm -rf build
