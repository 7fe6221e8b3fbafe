#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// The platform's text alignments; the numbers are stored in palettes.
enum class NSTextAlignment : int32_t { left = 0, right = 1, center = 2, justified = 3, natural = 4 };
/// The direction of a paragraph. Natural: that of its first character with a direction, else left to right (rules P2
/// and P3 of UAX #9, the Unicode bidirectional algorithm).
enum class NSWritingDirection : int32_t { natural = -1, leftToRight = 0, rightToLeft = 1 };

/// The place of text after a tab. `location` is in points from the leading margin, which is the right one in a
/// right-to-left paragraph. The text up to the next tab or the line's end begins there, ends there, is centred there,
/// or has its first decimal point there ('.' or ',' between digits; if there is none, its end).
struct NSTextTab {
    /// The part of the text at the tab's location.
    enum class Alignment { left, right, center, decimal };
    float location = 0;                     ///< a tab is ignored unless above 0
    Alignment alignment = Alignment::left;  ///< left means the text's beginning, right its end
    friend bool operator==(const NSTextTab&, const NSTextTab&) = default;
};

/// The placement of a paragraph's lines; immutable. To change a style, copy its `values()`, edit them and make a new
/// style. A paragraph has the style of its first character. Two styles are equal if their values are.
class NSParagraphStyle final : public NSObject {
public:
    /// The contents of a style, stored as given. Layout treats lengths that are not finite, or negative except for the
    /// tail indent, as 0, and clamps lengths to `Limits::kLengthMax`.
    struct Values {
        /// Natural aligns to the side where the paragraph's lines begin.
        NSTextAlignment alignment = NSTextAlignment::natural;
        /// Determines which margin is the leading one.
        NSWritingDirection baseWritingDirection = NSWritingDirection::natural;
        float lineSpacing = 0;             ///< points below each line
        float paragraphSpacing = 0;        ///< points below the last line of a paragraph, in addition to line spacing
        float paragraphSpacingBefore = 0;  ///< points above the first line, unless it is the first in its container
        float minimumLineHeight = 0;       ///< points; 0: no minimum
        float maximumLineHeight = 0;       ///< points; 0: no maximum
        float lineHeightMultiple = 0;      ///< factor for the fonts' height, before the limits; 0 counts as 1
        float firstLineHeadIndent = 0;     ///< points from the leading margin
        float headIndent = 0;              ///< points from the leading margin, for the other lines
        float tailIndent = 0;              ///< the end of lines; 0 or less: points before the trailing margin
        std::vector<NSTextTab> tabStops = {};  ///< in the order of their locations
        float defaultTabInterval = 28;         ///< points; after the last tab stop, tabs go to multiples of it
        friend bool operator==(const Values&, const Values&) = default;
    };

    /// The style of text without one: default `Values`.
    static Ref<NSParagraphStyle> defaultParagraphStyle();
    /// Accepts any values.
    static Ref<NSParagraphStyle> paragraphStyleWithValues(const Values& values);

    /// The values as given.
    ///@{
    const Values& values() const { return values_; }
    NSTextAlignment alignment() const { return values_.alignment; }
    float lineSpacing() const { return values_.lineSpacing; }
    float paragraphSpacing() const { return values_.paragraphSpacing; }
    ///@}

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSParagraphStyle"; }

private:
    explicit NSParagraphStyle(const Values& values) : values_(values) {}

    const Values values_;
};

}  // namespace qz
