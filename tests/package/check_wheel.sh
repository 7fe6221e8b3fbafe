#!/usr/bin/env bash
# Makes a source distribution of the tree and a wheel from it, and draws with the wheel in a virtual environment.
# Usage: check_wheel.sh SOURCE PYTHON [BUILD]; without the build folder the wheel is compiled, a matter of minutes.
set -euo pipefail
source=$(realpath "$1")
python=$2
if [ $# -gt 2 ]; then
  QZANNO_BUILD_FOLDER=$(realpath "$3")
  export QZANNO_BUILD_FOLDER
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }; }

# A copy, so that nothing is written into the tree.
mkdir "$work/tree" "$work/wheels"
tar -C "$source" --exclude=./build --exclude=./out --exclude=./.git -cf - . | tar -C "$work/tree" -xf -
cd "$work/tree"
quietly "$python" setup.py sdist --dist-dir "$work"
cd "$work"
tar -xf qzanno-*.tar.gz
rm -rf tree
mv qzanno-*/ tree
# It must contain everything that CMake requires, even if an existing build is used.
quietly cmake -S tree -B configured -G Ninja -DQZANNO_BUILD_TESTS=OFF
quietly "$python" -m pip wheel ./tree --no-build-isolation --no-deps --no-index --wheel-dir wheels
rm -rf tree

# NumPy is the system's.
"$python" -m venv --system-site-packages --without-pip venv
quietly venv/bin/python -m pip install --no-index --no-deps wheels/*.whl
venv/bin/python -I - "$work/venv" "$source" <<'EOF'
import importlib.metadata, re, sys
import qzanno

venv, source = sys.argv[1:]
palette = qzanno.Palette.load(f"{source}/examples/broadcast.plist")
assert qzanno.Renderer(palette, frame=(320, 180)).render(qzanno.Title("Good evening", annotations=["Lower Third"])).any()
loaded = set(re.findall(r"/\S*/(?:lib|_)qzanno\S*", open("/proc/self/maps").read(), re.IGNORECASE))
assert len(loaded) == 3 and all(path.startswith(venv) for path in loaded), loaded
files = {file.name for file in importlib.metadata.files("qzanno") if str(file.parent) == "qzanno"}
assert files == {path.rsplit("/", 1)[1] for path in loaded} | {"__init__.py", "__init__.pyi", "_values.py", "py.typed"}, files
metadata = importlib.metadata.metadata("qzanno")
assert metadata["Version"] == qzanno.__version__ and metadata["License"] == "MIT", metadata
print("drawn with", *sorted(path.rsplit("/", 1)[1] for path in loaded))
EOF
