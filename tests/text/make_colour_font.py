#!/usr/bin/env python3
"""Writes a font of coloured squares: ColourPaintTest.cpp says what each letter must look like.

1000 units to the em. The square is 800 wide and stands on the baseline at 0; letters from 'A' each paint it another way.
"""
import sys

from fontTools.colorLib.builder import buildCOLR, buildCPAL
from fontTools.fontBuilder import FontBuilder
from fontTools.pens.ttGlyphPen import TTGlyphPen

RED, GREEN, BLUE, TEXT = 0, 1, 2, 0xFFFF


def rectangle(left, bottom, right, top):
    pen = TTGlyphPen(None)
    pen.moveTo((left, bottom))
    for point in ((left, top), (right, top), (right, bottom)):
        pen.lineTo(point)
    pen.closePath()
    return pen.glyph()


def solid(colour, alpha=1.0):
    return {"Format": 2, "PaletteIndex": colour, "Alpha": alpha}


def line(*stops):
    return {"Extend": "pad", "ColorStop": [{"StopOffset": o, "PaletteIndex": c, "Alpha": 1.0} for o, c in stops]}


def filled(glyph, paint):
    return {"Format": 10, "Glyph": glyph, "Paint": paint}


PAINTS = {
    "A": [("square", RED), ("middle", TEXT)],
    "B": filled("square", {"Format": 4, "ColorLine": line((0, RED), (1, BLUE)),
                           "x0": 0, "y0": 0, "x1": 800, "y1": 0, "x2": 0, "y2": 800}),
    "C": filled("square", {"Format": 6, "ColorLine": line((0, GREEN), (0.5, GREEN), (1, BLUE)),
                           "x0": 400, "y0": 400, "r0": 0, "x1": 400, "y1": 400, "r1": 400}),
    "D": filled("square", {"Format": 8, "ColorLine": line((0, RED), (1, BLUE)),
                           "centerX": 400, "centerY": 400, "startAngle": 0, "endAngle": 360}),
    "E": {"Format": 14, "dx": 100, "dy": 0,
          "Paint": {"Format": 18, "scaleX": -1, "scaleY": 1, "centerX": 400, "centerY": 0,
                    "Paint": filled("left", solid(GREEN, 0.5))}},
    "F": {"Format": 32, "CompositeMode": "src_out", "SourcePaint": filled("square", solid(BLUE)),
          "BackdropPaint": filled("middle", solid(RED))},
    "G": {"Format": 1, "Layers": [filled("left", solid(RED)), {"Format": 11, "Glyph": "G"}]},
    "H": {"Format": 26, "angle": 45, "centerX": 400, "centerY": 400, "Paint": filled("square", solid(GREEN))},
}


def main(path):
    shapes = {
        ".notdef": rectangle(0, 0, 1, 1),
        "square": rectangle(0, 0, 800, 800),
        "middle": rectangle(200, 200, 600, 600),
        "left": rectangle(0, 0, 400, 800),
    }
    shapes.update({letter: rectangle(0, 0, 1, 1) for letter in PAINTS})
    font = FontBuilder(1000, isTTF=True)
    font.setupGlyphOrder(list(shapes))
    font.setupCharacterMap({ord(letter): letter for letter in PAINTS})
    font.setupGlyf(shapes)
    font.setupHorizontalMetrics({name: (1000, 200 if name == "middle" else 0) for name in shapes})
    font.setupHorizontalHeader(ascent=900, descent=-100)
    font.setupNameTable({"familyName": "Squares", "styleName": "Regular", "psName": "Squares"})
    font.setupOS2()
    font.setupPost()
    font.font["CPAL"] = buildCPAL([[(1, 0, 0, 1), (0, 1, 0, 1), (0, 0, 1, 1)]])
    font.font["COLR"] = buildCOLR(PAINTS, glyphMap=font.font.getReverseGlyphMap())
    font.save(path)


main(sys.argv[1])
