#!/usr/bin/env bash
# The C program's checks, and its pictures against those of the command line, byte by byte.
# Usage: check_c.sh C_INTERFACE QZANNO EXAMPLES
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$1" "$3/broadcast.plist" "$3/first-title.vtt" "$work/c.rgba"
"$2" render "$3/first-title.vtt" -p "$3/broadcast.plist" -s 1920x1080 --data 640x360 -j 1 -o - >"$work/tool.rgba"
cmp "$work/c.rgba" "$work/tool.rgba"
