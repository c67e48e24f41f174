#!/usr/bin/env bash
# Installs a build, then builds and runs the same client against the installed tree in both ways: run.sh BUILD HERE
set -euo pipefail

build=$1
here=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >"$work/install.log"
# Moved, so that a path of the build or of the install step would show.
mv "$work/prefix" "$work/moved"
prefix=$work/moved
libdir=$(dirname "$(find "$prefix" -name libquillon.so)")

cmake -S "$here/cmake" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCLIENT="$here/../../examples/first_client.cpp" \
  >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"

export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags < <(pkg-config --cflags --libs quillon)
"${CXX:-c++}" -std=c++20 "$here/../../examples/first_client.cpp" "${flags[@]}" -Wl,-rpath,"$libdir" -o "$work/pkg"

export QUILLON_HOME=$work/home
quillon=$prefix/bin/quillon
"$quillon" init "$QUILLON_HOME" >/dev/null
for client in "$work/cmake/client" "$work/pkg"; do
  printf 'The colour of money\n' >"$work/text.txt"
  "$quillon" create "$work/papers.vlt" --overwrite >/dev/null
  "$quillon" import "$work/papers.vlt" "$work/text.txt"
  "$client" "$work/papers.vlt"
  "$quillon" show "$work/papers.vlt" text.txt --text | grep -q 'The color of money'
done
