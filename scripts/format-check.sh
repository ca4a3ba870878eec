#!/bin/sh
# Fails when a C or C++ file of the project differs from what clang-format
# makes of it (the style is in .clang-format).
set -eu
cd "$(dirname "$0")/.."
git ls-files '*.cpp' '*.h' '*.c' | xargs clang-format --dry-run --Werror
echo "format check: $(git ls-files '*.cpp' '*.h' '*.c' | wc -l) files formatted"
