#!/usr/bin/env python3
"""Checks that layers include only lower ones: reads the include lines of every source file.

Usage: check_includes.py ROOT. Prints each line that points the wrong way and exits with 1 when there is one.
"""

import pathlib
import re
import sys

LIBRARY = "QzAnno_AnnotatedTextFramework"
PLATFORM = ["platform/foundation", "platform/graphics", "platform/text"]

# What a folder may include besides itself.
ALLOWED = {
    "platform/foundation": [],
    "platform/graphics": PLATFORM[:1],
    "platform/text": PLATFORM[:2],
    "platform/ui": PLATFORM,
    f"{LIBRARY}/model": PLATFORM,
    f"{LIBRARY}/palette": PLATFORM + [f"{LIBRARY}/model"],
    f"{LIBRARY}/format": PLATFORM + [f"{LIBRARY}/{f}" for f in ("model", "palette")],
    f"{LIBRARY}/render": PLATFORM + [f"{LIBRARY}/{f}" for f in ("model", "palette", "format")],
    f"{LIBRARY}/archive": PLATFORM + [f"{LIBRARY}/{f}" for f in ("model", "palette", "format")],
    f"{LIBRARY}/ui": PLATFORM + ["platform/ui", LIBRARY],
    "captions": PLATFORM + [LIBRARY],
    "bindings/c": PLATFORM + [LIBRARY, "captions"],
    "bindings/python": ["bindings/c"],
    "apps/qzanno": PLATFORM + [LIBRARY, "captions"],
    "apps/qzanno-composer": PLATFORM + ["platform/ui", LIBRARY, "captions"],
}

# Inside platform/text, from the lowest tier to the highest: a file includes its own tier and those below. A name stands for
# the header and the source of it, unless the source has a place of its own.
TEXT = "platform/text"
TEXT_TIERS = [
    # Characters and attributes.
    "AttributeNames Joining LanguageTag NSAttributedString NSAttributedStringCoding NSMutableAttributedString NSFormatter "
    "NSParagraphStyle ParagraphRange SmallBlockPool TemporaryAttributes TextBreaker TextCoverage WordBreaks",
    # Fonts and their glyphs.
    "ColourGlyphs ColourPaint FaceChoice FontDirectory FontFace FontFallback FontFixing FontLibrary FontListing "
    "FontSuggestion FontSynthesis FontTraits FontconfigRef GlyphOutline GlyphPath NSFont NSFontCoding NamedInstances",
    "GlyphCache GlyphDrawing GlyphImage",
    # Shaping, then lines.
    "Shaping ShapingCache",
    "Bidi Kashida LineFiller LinePen LinePlacement Paragraph",
    # Layout: the objects that it works on, what owns lines and glyphs, and who asks it.
    "CaretCell CaretCells NSTextContainer.h NSTextStorage.h TextLayout TextRules.h",
    "NSLayoutManager NSTextContainer.cpp NSTextStorage.cpp RunAppearance TextRules.cpp",
    # What a person sees and edits.
    "CaretGeometry NSTextView TextCaret",
]
TIER_OF = {name: tier for tier, names in enumerate(TEXT_TIERS) for name in names.split()}

# A layer's public headers lie below the one folder that hosts have on their search path.
PUBLIC = f"{LIBRARY}/include/QzAnno"
DEPENDENCY = re.compile(r"<(hb|cairo|unicode/|ft2build|freetype|fontconfig/|png\.h|expat|CLI/|nlohmann/|libdeflate|nettle/|pybind11/)")
QT = re.compile(r"<Q[A-Z]\w*>")
QT_FOLDERS = ("platform/ui", f"{LIBRARY}/ui", "apps/qzanno-composer")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"][^>"]+[>"])')


def home_of(path):
    """The path as it would be if public headers lay beside the sources of their layer."""
    if not path.startswith(PUBLIC + "/"):
        return path
    layer = path[len(PUBLIC) + 1:]
    return layer if layer.startswith("platform/") else f"{LIBRARY}/{layer}"


def tier_of(path):
    """The tier of a file of platform/text; None for other files, and for one that has no tier."""
    path = pathlib.PurePosixPath(home_of(path))
    return TIER_OF.get(path.name, TIER_OF.get(path.stem)) if path.parent.as_posix() == TEXT else None


def folder_of(path):
    return next((folder for folder in ALLOWED if home_of(path).startswith(folder + "/")), None)


def faults_of(root, file):
    name = file.relative_to(root).as_posix()
    folder = folder_of(name)
    if folder == TEXT and tier_of(name) is None:
        yield f"{name}: give it a tier in {pathlib.Path(__file__).name}"
    for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        target = match.group(1)
        place = f"{name}:{number}"
        if QT.match(target) and folder not in QT_FOLDERS:
            yield f"{place}: {target}: Qt belongs to {', '.join(QT_FOLDERS)}"
        shows_dependency = DEPENDENCY.match(target) or QT.match(target)
        if shows_dependency and name.startswith(PUBLIC):
            yield f"{place}: {target}: an installed header must not show a dependency"
        if target.startswith("<"):
            continue
        path = target.strip('"')
        if path.startswith("QzAnno/"):
            path = f"{LIBRARY}/include/{path}"
        if not (root / path).is_file():
            yield f"{place}: {target}: write the path from the root of the repository, of a public header QzAnno/..."
        elif name.startswith(PUBLIC) and not path.startswith(PUBLIC):
            yield f"{place}: {target}: a public header includes public ones alone"
        elif folder and not any(home_of(path).startswith(a + "/") for a in ALLOWED[folder] + [folder]):
            yield f"{place}: {target}: {folder} may not include that"
        elif folder == TEXT and (tier_of(path) or 0) > (tier_of(name) or 0):
            yield f"{place}: {target}: stands on a higher tier"


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    files = [f for folder in [PUBLIC, *ALLOWED] for f in sorted((root / folder).rglob("*")) if f.suffix in (".h", ".cpp")]
    if not files:
        sys.exit(f"{root} holds no sources")
    faults = [fault for file in files for fault in faults_of(root, file)]
    print("\n".join(faults) or f"{len(files)} files, every arrow points downward")
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
