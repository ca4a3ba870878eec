#!/bin/sh
# Builds the libFuzzer targets (clang, build-fuzz/) and runs each on its seed
# corpus for a while, failing on any crash, leak or time-out.
#   scripts/fuzz-smoke.sh [seconds per target, default 30]
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-30}
cmake -S . -B build-fuzz -G Ninja -DSORVIK_FUZZ=ON -DSORVIK_BUILD_TESTS=OFF \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz --target fuzz_module_xml fuzz_config fuzz_command_line fuzz_baseline fuzz_version_compare fuzz_audit_document
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
for target in module_xml config command_line baseline version_compare audit_document; do
    # New inputs go to a scratch directory; the checked-in seeds stay as they are.
    scratch=$(mktemp -d /tmp/sorvik-fuzz-$target.XXXXXX)
    echo "== fuzz_$target for ${seconds}s"
    build-fuzz/fuzz/fuzz_$target -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -max_len=65536 -dict="fuzz/dict/$target.dict" -artifact_prefix="$scratch/" -print_final_stats=1 \
        "$scratch" "fuzz/corpus/$target" 2>&1 | grep -E "^(stat::number_of_executed_units|stat::average_exec_per_sec|==|SUMMARY)" || true
    if ls "$scratch"/crash-* "$scratch"/leak-* "$scratch"/timeout-* "$scratch"/oom-* >/dev/null 2>&1; then
        echo "fuzz_$target found a failing input: $(ls "$scratch"/crash-* "$scratch"/leak-* "$scratch"/timeout-* "$scratch"/oom-* 2>/dev/null)"
        exit 1
    fi
    rm -rf "$scratch"
done
