#!/usr/bin/env bash
# Installs the build into a temporary folder and builds programs of other projects against it, by find_package and by
# pkg-config.
# Usage: check_package.sh BUILD_FOLDER PYTHON
set -euo pipefail
build=$(realpath "$1")
host=$(realpath "$(dirname "$0")/host")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$host" -B "$work/host" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/host"
libdir=$(realpath "$(dirname "$(find "$work/prefix" -name QzAnno-static.pc)")/..")
# shellcheck disable=SC2046
g++ -std=c++20 "$host/static_host.cpp" -o "$work/host/by-pkg-config" $(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs QzAnno-static)
for program in static_host by-pkg-config; do
  "$work/host/$program"
  if ldd "$work/host/$program" | grep libQzAnno; then
    echo "$program needs the shared library" >&2
    exit 1
  fi
done
if [ -x "$work/host/ui_host" ]; then
  QT_QPA_PLATFORM=offscreen "$work/host/ui_host" "$work/defaults.ini"
fi

# The page for developers opens with a program, which builds and draws.
tree=$(realpath "$(dirname "$0")/../..")
{
  printf '#include <QzAnno/QzAnno.h>\nint main() {\n'
  awk '/^```$/ && shown { exit } shown { print } /^```cpp$/ { shown = 1 }' "$tree/docs/developers.md"
  printf 'return changed.isEmpty() ? 1 : 0;\n}\n'
} >"$work/page.cpp"
# shellcheck disable=SC2046
g++ -std=c++20 "$work/page.cpp" -o "$work/page" $(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs QzAnno)
(cd "$tree/examples" && LD_LIBRARY_PATH=$libdir "$work/page")

"$(dirname "$0")/build_hosts.sh" "$(dirname "$0")/../../examples" "$work/prefix" "$libdir"

# The installed tool and the Python package find the libraries by relative paths.
"$work/prefix/bin/qzanno" --version
package=$(find "$work/prefix" -path '*/qzanno/__init__.py')
if [ -n "$package" ]; then
  PYTHONPATH=$(dirname "$(dirname "$package")") "$2" -c 'import qzanno; print("qzanno for Python", qzanno.__version__)'
fi
