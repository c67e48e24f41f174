#!/usr/bin/env bash
# The README's C++ block has to be examples/first_client.cpp to the letter.
set -euo pipefail
sed -n '/^```cpp$/,/^```$/p' "$1/README.md" | sed '1d;$d' | diff - "$1/examples/first_client.cpp"
