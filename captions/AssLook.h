#pragma once

#include <set>
#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/AssFonts.h"
#include "captions/AssScript.h"

namespace qz {

/// The distance of text from a palette's margins, which is also how far its box extends beyond it, in points.
inline constexpr double kLinePaddingOfAss = 5;

/// A palette's look as far as SubStation Alpha supports it, and the placement of a line of dialogue; lengths are in
/// points.
struct AssLook {
    AssFont font;
    /// As in `AssStyle`.
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
    /// To the left, per unit of height.
    double slant = 0;
    bool isBoxed = false;
    /// As on the number pad.
    int alignment = 2;
    double marginLeft = 0;
    double marginRight = 0;
    double marginTop = 0;
    double marginBottom = 0;
};

/// The look described by complete attributes (see `assembleCompleteAttributes`). `losses` receives one line for each
/// kind of feature that the look cannot hold.
AssLook assLookOf(const NSDictionary& attributes, NSSize screen, std::set<std::string>& losses);

/// The style nearest to the look.
AssStyle styleOfLook(const std::string& name, const AssLook& look);

/// The text after "Style: ", in the order of AssScript.h's default columns.
std::string writtenStyle(const AssStyle& style);

/// The overrides that change letters from one look to another: "\b1\1c&H00FFFF&", or empty.
std::string overridesBetween(const AssLook& from, const AssLook& to);

/// The look of the style alone.
AssLook lookOfStyle(const AssStyle& style, const AssLook& written);

/// At most two digits after the point: "4.5", "20".
std::string shortNumber(double value);

}  // namespace qz
