#!/bin/sh
# Builds a release tree with the benchmarks and runs all of them:
# data-model parsing and duplicate removal, the invoker, and whole collections.
# Run as root on an otherwise idle machine.
set -eu
cd "$(dirname "$0")/.."
"$PWD/scripts/setup.sh"
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DSORVIK_BUILD_TESTS=OFF \
    -DSORVIK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build-bench
build-bench/bench/datamodel/bench_datamodel
build-bench/bench/invoker/bench_invoker
python3 bench/collection_bench.py --binary build-bench/ModularIC/Controller/sorvik
