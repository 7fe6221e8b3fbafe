#!/usr/bin/env bash
# Installs the build into a folder of its own and builds programs of other projects against it, by find_package and by pkg-config.
# Usage: check_package.sh BUILD_FOLDER PYTHON
set -euo pipefail
build=$(realpath "$1")
host=$(realpath "$(dirname "$0")/host")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$host" -B "$work/host" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/host"
"$work/host/host"
"$work/host/static_host"
if [ -x "$work/host/ui_host" ]; then
  QT_QPA_PLATFORM=offscreen "$work/host/ui_host" "$work/defaults.ini"
fi
if ldd "$work/host/host" | grep libQt; then
  echo "the core library needs the toolkit" >&2
  exit 1
fi
if ldd "$work/host/static_host" | grep libQzAnno; then
  echo "the static host needs the shared library" >&2
  exit 1
fi

libdir=$(realpath "$(dirname "$(find "$work/prefix" -name QzAnno.pc)")/..")
for package in QzAnno QzAnno-static; do
  flags=$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs "$package")
  # shellcheck disable=SC2086
  g++ -std=c++20 "$host/host.cpp" -o "$work/by-pkg-config" $flags
  LD_LIBRARY_PATH="$libdir" "$work/by-pkg-config"
done

"$(dirname "$0")/build_hosts.sh" "$(dirname "$0")/../../examples" "$work/prefix" "$libdir"

# The installed tool and the Python package find the libraries by where they lie.
"$work/prefix/bin/qzanno" --version
package=$(find "$work/prefix" -path '*/qzanno/__init__.py')
if [ -n "$package" ]; then
  PYTHONPATH=$(dirname "$(dirname "$package")") "$2" -c 'import qzanno; print("qzanno for Python", qzanno.__version__)'
fi
