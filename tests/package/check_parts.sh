#!/usr/bin/env bash
# Only its option leaves a part out. If a dependency is hidden, the configuration stops with a line that names the
# Debian package and the option; with every part off, no dependency is missed.
# Usage: check_parts.sh SOURCE
set -euo pipefail
source=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

hide=-DCMAKE_DISABLE_FIND_PACKAGE_
parts=(
  "QZANNO_DESK qt6-base-dev ${hide}Qt6=ON"
  "QZANNO_DESK libqt6opengl6-dev ${hide}Qt6OpenGL=ON" # without it UiTools is found, and cannot be used
  "QZANNO_PYTHON pybind11-dev ${hide}pybind11=ON"
  "QZANNO_PYTHON python3-numpy -DPython_NumPy_INCLUDE_DIR=/nowhere"
  "QZANNO_COMMAND_LINE libcli11-dev ${hide}CLI11=ON"
  "QZANNO_BUILD_TESTS libgtest-dev ${hide}GTest=ON"
  "QZANNO_BUILD_BENCH libbenchmark-dev ${hide}benchmark=ON"
)
off=(-DQZANNO_COMPLETION=OFF -DQZANNO_REFERENCE=OFF -DQZANNO_BUILD_PEERS=OFF)
hidden=()
for part in "${parts[@]}"; do
  read -r option _ hide <<<"$part"
  off+=("-D$option=OFF")
  hidden+=("$hide")
done
configure() { cmake --fresh -S "$source" -B "$work/build" -G Ninja "${off[@]}" "$@" >"$work/log" 2>&1; }

configure "${hidden[@]}" || { cat "$work/log"; exit 1; }
for option in "${off[@]}"; do
  grep -q "left out: .*(${option#-D})" "$work/log" || { echo "the list at the end does not name ${option#-D}"; exit 1; }
done
for part in "${parts[@]}"; do
  read -r option package hide <<<"$part"
  if configure "-D$option=ON" "$hide" || ! grep -q "install the Debian package $package, or leave .* out with -D$option=OFF\$" "$work/log"; then
    echo "$part: no line that names the package and the option"
    tail "$work/log"
    exit 1
  fi
done
