#pragma once

#include <set>
#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/AssFonts.h"
#include "captions/AssScript.h"

namespace qz {

/// How far text stays from the margins of a palette, and its box reaches beyond it, in points.
inline constexpr double kLinePaddingOfAss = 5;

/// What SubStation Alpha has of a look of a palette's, and how a line of dialogue is placed; lengths are in points.
struct AssLook {
    AssFont font;
    /// As that of `AssStyle`.
    double fontSize = 0;
    CaptionColour primary;
    CaptionColour outline = {0, 0, 0, 255};
    CaptionColour back = {0, 0, 0, 255};
    double outlineWidth = 0;
    double shadowX = 0;
    double shadowY = 0;
    bool isUnderlined = false;
    bool isStruck = false;
    double spacing = 0;
    /// To the left, for each unit of height.
    double slant = 0;
    bool isBoxed = false;
    /// As on the number pad.
    int alignment = 2;
    double marginLeft = 0;
    double marginRight = 0;
    double marginTop = 0;
    double marginBottom = 0;
};

/// The look that attributes describe, complete with their font (see `assembleCompleteAttributes`). `losses` receives a
/// line for each kind of thing that the look cannot hold.
AssLook assLookOf(const NSDictionary& attributes, NSSize screen, std::set<std::string>& losses);

/// The style that comes nearest to the look.
AssStyle styleOfLook(const std::string& name, const AssLook& look);

/// What stands behind "Style: ", in the order of AssScript.h's default columns.
std::string writtenStyle(const AssStyle& style);

/// The overrides that turn what letters look like in one look into those of another: "\b1\1c&H00FFFF&", or nothing.
std::string overridesBetween(const AssLook& from, const AssLook& to);

/// The look that a style alone gives.
AssLook lookOfStyle(const AssStyle& style, const AssLook& written);

/// At most two digits behind the point: "4.5", "20".
std::string shortNumber(double value);

}  // namespace qz
