#!/bin/sh
# Builds a release tree with the benchmarks and runs all of them: data-model
# parsing and duplicate removal, the invoker at 64 and 512 modules, and whole
# collections (modules against the floor and against xargs -P8; 10k, 100k and
# 1M devices against xmllint --noout; one module printing a gigabyte), each
# with its ratios and slopes; then sorvik-audit's check and diff against
# xmllint --noout, and the fleet store's load (against COPY) and drift. Run as
# root on an otherwise idle machine; it takes about a quarter of an hour and
# needs about 5 GB of memory.
set -eu
cd "$(dirname "$0")/.."
"$PWD/scripts/setup.sh"
cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DSORVIK_BUILD_TESTS=OFF \
    -DSORVIK_BUILD_BENCHMARKS=ON >/dev/null
cmake --build build-bench
build-bench/bench/datamodel/bench_datamodel
build-bench/bench/invoker/bench_invoker --modules 64 --runs 3
build-bench/bench/invoker/bench_invoker --modules 512 --runs 1
python3 bench/collection_bench.py --binary build-bench/ModularIC/Controller/sorvik \
    --modules 64,512 --devices 10000,100000,1000000 --gib
python3 bench/audit_bench.py --binary build-bench/sorvik-audit/sorvik-audit --devices 10000,100000
build-bench/bench/fleet/bench_fleet --hosts 1000,10000,30000
