#!/usr/bin/env python3
"""Checks the names that the libraries export, and that the C interface still matches its SONAME.

Usage: check_abi.py ROOT BUILD [--update]

The names that libqzanno-c exports are those of bindings/c/qzanno-c.symbols and those that qzanno.h declares. What the C++ core
exports is this project's own, with no type of a dependency. The types and signatures of qzanno.h are compatible with
bindings/c/qzanno-c.abi, which --update writes anew: after functions were added, or with a new QZANNO_C_SOVERSION.
"""

import pathlib
import re
import subprocess
import sys
import tempfile

OWN = re.compile(r"^((non-)?virtual thunk to |(typeinfo|typeinfo name|vtable|VTT|guard variable|TLS init function|TLS wrapper function) for )?qz::")
DEPENDENCY = re.compile(r"\b(hb_\w+|FT_\w+|cairo_\w+|_?Fc[A-Z]\w*|U(BiDi|Char32|BreakIterator|ErrorCode)\w*|icu_\d+|XML_\w+|png_\w+|libdeflate_\w+|Q(t|[A-Y])\w*)\b")


def run(*command, cwd=None):
    return subprocess.run([str(part) for part in command], check=True, capture_output=True, text=True, cwd=cwd).stdout


def exported(library, *options):
    lines = run("nm", "-D", "--defined-only", *options, library).splitlines()
    return [line.split(" ", 2)[2] for line in lines]


def check_names(root, build):
    listed = (root / "bindings/c/qzanno-c.symbols").read_text().split()
    declared = re.findall(r"QZANNO_API[^;]*?\b(qzanno_\w+)\(", (root / "bindings/c/qzanno.h").read_text(encoding="utf-8"))
    found = exported(build / "bindings/c/libqzanno-c.so")
    for name in sorted(set(listed) ^ set(declared)):
        yield f"{name}: in one of qzanno.h and qzanno-c.symbols only"
    for name in sorted(set(listed) ^ set(found)):
        yield f"{name}: in one of qzanno-c.symbols and libqzanno-c.so only"
    core = exported(build / "QzAnno_AnnotatedTextFramework/libQzAnno.so", "-C")
    if len(core) < 500:
        yield f"libQzAnno.so exports {len(core)} names, fewer than it can"
    for name in core:
        if not OWN.match(name):
            yield f"libQzAnno.so exports {name}, which is not its own"
        elif DEPENDENCY.search(name):
            yield f"libQzAnno.so exports {name}, which shows a dependency"


def describe_header(root, folder):
    """The ABI that qzanno.h declares, of a library of empty functions with its prototypes."""
    prototypes = folder / "prototypes"
    run("gcc", "-std=c99", "-fsyntax-only", "-aux-info", prototypes, root / "bindings/c/qzanno.h")
    functions = re.findall(r"^.*?\*/ extern (.*\bqzanno_\w+ \(.*\));$", prototypes.read_text(), re.MULTILINE)
    source = folder / "stubs.c"
    stubs = "".join(f"{number_parameters(function)} {{ __builtin_trap(); }}\n" for function in functions)
    source.write_text('#include "qzanno.h"\n' + stubs)
    library = folder / "libqzanno-c.so"
    run("gcc", "-std=c99", "-g", "-shared", "-fPIC", "-nostdlib", "-I", root / "bindings/c", source.name, "-o", library, cwd=folder)
    return library


def number_parameters(prototype):
    """The prototype of a definition: compilers list only types."""
    head, parameters = re.fullmatch(r"(.*?qzanno_\w+ )\((.*)\)", prototype).groups()
    if parameters == "void":
        return prototype
    named = [f"{parameter} p{i}" for i, parameter in enumerate(parameters.split(", "))]
    return f"{head}({', '.join(named)})"


def check_header(root, update):
    baseline = root / "bindings/c/qzanno-c.abi"
    with tempfile.TemporaryDirectory() as name:
        library = describe_header(root, pathlib.Path(name))
        if update:
            run("abidw", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs", "--out-file", baseline, library)
            return 0
        difference = subprocess.run(["abidiff", baseline, library], capture_output=True, text=True, check=False)
    if difference.returncode != 0:
        print(difference.stdout + difference.stderr)
        print("The interface has changed. Were functions added only, run check_abi.py with --update; else raise QZANNO_C_SOVERSION too.")
    return 1 if difference.returncode else 0


def main():
    root, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    faults = list(check_names(root, build))
    print("\n".join(faults) or "exported names are as promised")
    result = check_header(root, "--update" in sys.argv)
    sys.exit(1 if faults else result)


if __name__ == "__main__":
    main()
