#!/bin/sh
# Sets up, builds and runs the whole test suite.
#   scripts/test.sh            plain build in build/
#   scripts/test.sh --sanitize AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
#   scripts/test.sh --tsan     ThreadSanitizer build in build-tsan/: the thread pool, invoker and
#                              data model tests
#   scripts/test.sh --vm       the collector on a real Debian kernel in a QEMU guest (build-vm/)
set -eu
cd "$(dirname "$0")/.."
if [ "${1:-}" = "--vm" ]; then
    "$PWD/scripts/setup-vm.sh"
    exec sh tests/vm/run-vm-test.sh build-vm /var/cache/sorvik-vm/kernel
fi
"$PWD/scripts/setup.sh"
dir=build
# The benchmarks are built, not run, so they cannot fall behind the code.
flags="-DSORVIK_BUILD_BENCHMARKS=ON"
tests=""
if [ "${1:-}" = "--tsan" ]; then
    dir=build-tsan
    flags="-DSORVIK_TSAN=ON -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug"
    tests="ModularIC/Invoker/qvr_threads_tests ModularIC/Invoker/qvr_invoker_tests ModularIC/Datamodel/qvr_datamodel_tests"
    export TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1"
elif [ "${1:-}" = "--sanitize" ]; then
    dir=build-asan
    flags="-DSORVIK_SANITIZE=ON -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug"
    export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:verify_asan_link_order=0"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi
# shellcheck disable=SC2086
cmake -S . -B "$dir" -G Ninja $flags >/dev/null
if [ -n "$tests" ]; then
    for program in $tests; do
        cmake --build "$dir" --target "$(basename "$program")"
        (cd "$dir/$(dirname "$program")" && "./$(basename "$program")" --gtest_brief=1)
    done
else
    cmake --build "$dir"
    ctest --test-dir "$dir" --output-on-failure -j2
fi
