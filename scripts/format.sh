#!/usr/bin/env bash
# Formats the C++ files of the tree in place; with "check", names those that are not formatted and fails.
set -euo pipefail
cd "$(dirname "$0")/.."

mode=(-i)
[ "${1:-}" = check ] && mode=(--dry-run --Werror)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' | xargs -0 -r clang-format "${mode[@]}"
