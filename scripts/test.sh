#!/bin/sh
# Sets up, builds and runs the whole test suite.
#   scripts/test.sh            plain build in build/
#   scripts/test.sh --sanitize AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
set -eu
cd "$(dirname "$0")/.."
"$PWD/scripts/setup.sh"
dir=build
flags=""
if [ "${1:-}" = "--sanitize" ]; then
    dir=build-asan
    flags="-DSORVIK_SANITIZE=ON -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug"
    export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:verify_asan_link_order=0"
    export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi
# shellcheck disable=SC2086
cmake -S . -B "$dir" -G Ninja $flags >/dev/null
cmake --build "$dir"
ctest --test-dir "$dir" --output-on-failure -j2
