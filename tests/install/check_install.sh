#!/bin/sh
# Installs the library into an empty folder and builds a program against it, once through pkg-config
# and once through CMake. Usage: check_install.sh BUILD_FOLDER MESSAGE
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$1" --prefix "$work/root" >/dev/null
libdir=$(dirname "$(find "$work/root" -name 'libmimora.so')")

PKG_CONFIG_PATH=$libdir/pkgconfig
export PKG_CONFIG_PATH
# The file says where it was configured to go; this one went elsewhere.
cc -o "$work/consumer" "$here/consumer.c" \
  $(pkg-config --define-variable=prefix="$work/root" --cflags --libs mimora)
LD_LIBRARY_PATH=$libdir "$work/consumer" "$2"

cmake -G Ninja -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/root" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer" "$2"
