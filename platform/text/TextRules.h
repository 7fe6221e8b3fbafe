#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// Which rules a run of text has.
struct TextRuleKinds {
    bool underline = false;      ///< under the text
    bool strikeThrough = false;  ///< through it

    /// Whether it has neither.
    bool isEmpty() const { return !underline && !strikeThrough; }
};

/// A piece of a rule under text or through it, as far as one run of attributes goes in one line.
struct TextRule {
    NSRect rect;            ///< what it covers, in the space that the glyphs are drawn in
    bool isBelow = false;   ///< under the text; else through it
    Ref<NSColor> color;     ///< of the text
    Range characters = {};  ///< the text that it belongs to
};

/// Neighbours in one colour as one, so that no seam shows between them.
std::vector<TextRule> joinedRules(const std::vector<TextRule>& rules);

}  // namespace qz
