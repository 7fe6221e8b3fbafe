#!/usr/bin/env bash
# Builds the programs of examples/host against a prefix, by find_package and by pkg-config, and runs them: the pictures of C++ and C,
# however built, are the same and not the bare frame.
# Usage: build_hosts.sh EXAMPLES PREFIX [LIBRARY_FOLDER]; without the folder the system must find the libraries by itself.
set -euo pipefail
examples=$(realpath "$1")
prefix=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

[ $# -lt 3 ] || export LD_LIBRARY_PATH=$3${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
pc_folder=$(dirname "$(find "$prefix" -name qzanno-c.pc)")
export PKG_CONFIG_PATH=$pc_folder

cmake -S "$examples/host" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
mkdir "$work/pkg-config"
# shellcheck disable=SC2046
c++ -std=c++20 "$examples/host/title_over_frame.cpp" $(pkg-config --cflags --libs QzAnno) -o "$work/pkg-config/title_over_frame"
# shellcheck disable=SC2046
cc -std=c99 -Wall -Wextra -pedantic -Werror "$examples/host/title_over_frame.c" $(pkg-config --cflags --libs qzanno-c) \
  ${3:+-Wl,-rpath-link,$3} -o "$work/pkg-config/title_over_frame_c"

for built in cmake pkg-config; do
  for program in title_over_frame title_over_frame_c; do
    "$work/$built/$program" "$examples/broadcast.plist" 'Lower Third' 'Good evening' "$work/title.ppm" 2>"$work/log"
    "$work/$built/$program" "$examples/broadcast.plist" 'Lower Third' '' "$work/bare.ppm" 2>"$work/log"
    [ -e "$work/first.ppm" ] || cp "$work/title.ppm" "$work/first.ppm"
    cmp "$work/first.ppm" "$work/title.ppm"
    if cmp -s "$work/bare.ppm" "$work/title.ppm"; then
      echo "$program, built by $built, draws nothing" >&2
      exit 1
    fi
  done
done
