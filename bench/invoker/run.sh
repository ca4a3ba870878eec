#!/bin/sh
# Builds and runs the invoker benchmark alone; arguments go to bench_invoker
# (defaults: 64 modules of 0.5 s, 3 runs). Best on an otherwise idle machine.
set -eu
cd "$(dirname "$0")/../.."
"$PWD/scripts/setup.sh"
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DSORVIK_BUILD_TESTS=OFF \
    -DSORVIK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build-bench --target bench_invoker
exec build-bench/bench/invoker/bench_invoker "$@"
