# Two commands do everything on a fresh Debian machine: `make run` and `make test`. The build itself is plain CMake.
#
#   make run [INPUT=path]   build the program and run an input (default: examples/water.inp)
#   make test               the same build plus all tests, then the sanitizer build with the tests of everything that reads files
#   make bench              micro-benchmarks, and the comparison with another program when that one is installed
#   make install            install below PREFIX (default /usr/local)
#   make format, make tidy  what the sources obey

BUILD    ?= build
SANITIZE ?= build-sanitize
INPUT    ?= examples/water.inp
PREFIX   ?= /usr/local
JOBS     ?= $(shell nproc)

CONFIGURE = cmake -S . -G Ninja -DCMAKE_BUILD_TYPE=Release

# The sanitizers run with what meets text from outside, with integrals and small SCF runs, and with one whole calculation of
# every kind the report tests know; not with the few tests that take minutes there and go through the same code.
SANITIZED_TARGETS = zentrix test_input test_molecule test_report test_dft test_dispersion test_solvation test_driver \
                    test_reports fuzz_readers test_integrals test_scf test_correlation test_composite
SANITIZED_LABELS  = ^(input|molecule|report|dft|dispersion|solvation|driver|reports|fuzz|integrals|scf|correlation|composite)$$
SANITIZED_EXCEPT  = HARTREE_FOCK_GRID|DFT_GRID_OF|ForEveryElement|H_SHELLS|NEGLECTED|MP2.Agrees|Counterpoise.EnergiesOf|EveryPointOfAn|SymmetricStarts

.PHONY: all run test test-release test-sanitize bench install format tidy clean packages test-packages bench-packages

all: packages
	$(CONFIGURE) -B $(BUILD) -DZENTRIX_TESTS=OFF
	cmake --build $(BUILD) -j $(JOBS) --target zentrix

run: all
	$(BUILD)/zentrix $(INPUT)

test: test-release test-sanitize

# Several tests at a time share the processors; threads that wait must not spin.
test-release test-sanitize: export OMP_WAIT_POLICY = passive
test-release test-sanitize: export OMP_NUM_THREADS = 2

test-release: test-packages
	$(CONFIGURE) -B $(BUILD) -DZENTRIX_TESTS=ON
	cmake --build $(BUILD) -j $(JOBS)
	ctest --test-dir $(BUILD) -j $(JOBS) --output-on-failure --timeout 600

test-sanitize: test-packages
	$(CONFIGURE) -B $(SANITIZE) -DZENTRIX_TESTS=ON -DZENTRIX_SANITIZE=ON
	cmake --build $(SANITIZE) -j $(JOBS) --target $(SANITIZED_TARGETS)
	ctest --test-dir $(SANITIZE) -j $(JOBS) -L '$(SANITIZED_LABELS)' -E '$(SANITIZED_EXCEPT)' --output-on-failure --timeout 600

bench: bench-packages
	$(CONFIGURE) -B $(BUILD) -DZENTRIX_TESTS=OFF -DZENTRIX_BENCH=ON
	cmake --build $(BUILD) -j $(JOBS)
	for program in $(BUILD)/bench/bench_*; do [ -x $$program ] && [ ! -d $$program ] && $$program || exit 1; done
	@if python3 -c 'import pyscf' 2>/dev/null; then python3 bench/compare_with_peer.py; \
	else echo "The peer (pyscf) is not installed; the side-by-side comparison is left out."; fi

install: all
	cmake --install $(BUILD) --prefix $(PREFIX)

format:
	git ls-files '*.cpp' '*.hpp' | xargs clang-format -i

tidy:
	$(CONFIGURE) -B $(BUILD) -DZENTRIX_TESTS=ON
	git ls-files 'src/*.cpp' | xargs -P $(JOBS) -n 4 clang-tidy -p $(BUILD) --quiet

clean:
	rm -rf $(BUILD) $(SANITIZE)

packages:
	@tools/install_packages.sh g++ cmake ninja-build pkg-config libopenblas-openmp-dev liblapacke-dev libeigen3-dev libfmt-dev
test-packages: packages
	@tools/install_packages.sh libgtest-dev libgmock-dev nlohmann-json3-dev
bench-packages: packages
	@tools/install_packages.sh libbenchmark-dev
