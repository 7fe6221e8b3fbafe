#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// The rules of a run of text.
struct TextRuleKinds {
    bool underline = false;      ///< under the text
    bool strikeThrough = false;  ///< through it

    /// Whether it has neither.
    bool isEmpty() const { return !underline && !strikeThrough; }
};

/// A piece of a rule under or through text, for one run of attributes in one line.
struct TextRule {
    NSRect rect;            ///< in the space where the glyphs are drawn
    bool isBelow = false;   ///< under the text, otherwise through it
    Ref<NSColor> color;     ///< of the text
    Range characters = {};  ///< the text that it belongs to
};

/// Merges neighbours of one colour, so that no seam shows between them.
std::vector<TextRule> joinedRules(const std::vector<TextRule>& rules);

}  // namespace qz
