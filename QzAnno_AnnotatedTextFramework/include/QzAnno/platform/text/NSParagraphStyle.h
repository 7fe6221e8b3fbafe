#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// The platform's text alignments; the numbers are stored in palettes.
enum class NSTextAlignment : int32_t { left = 0, right = 1, center = 2, justified = 3, natural = 4 };
/// The direction of a paragraph. Natural: that of its first character which has one, else from left to right (rules P2
/// and P3 of UAX #9, the Unicode bidirectional algorithm).
enum class NSWritingDirection : int32_t { natural = -1, leftToRight = 0, rightToLeft = 1 };

/// Where text behind a tab is placed. `location` is in points from the leading margin, the right one in a paragraph
/// from right to left; up to the next tab or the line's end, the text begins there, ends there, has its middle there,
/// or its first decimal point ('.' or ',' between digits; its end without one).
struct NSTextTab {
    /// What of the text comes to the tab's place.
    enum class Alignment { left, right, center, decimal };
    float location = 0;                     ///< a tab that is not above 0 counts as not set
    Alignment alignment = Alignment::left;  ///< left is the text's beginning, right its end
    friend bool operator==(const NSTextTab&, const NSTextTab&) = default;
};

/// How the lines of a paragraph are placed; immutable. To vary one, copy its `values()`, change that, make a new style.
/// The style of a paragraph is that of its first character. Equal when the values are.
class NSParagraphStyle final : public NSObject {
public:
    /// All that a style says. Layout takes a length that is negative, but for the tail indent, or not finite, as 0, and
    /// one beyond `Limits::kLengthMax` as that; the style keeps what it was given.
    struct Values {
        /// Natural: to the side at which the lines of the paragraph begin.
        NSTextAlignment alignment = NSTextAlignment::natural;
        /// Decides which margin is the leading one.
        NSWritingDirection baseWritingDirection = NSWritingDirection::natural;
        float lineSpacing = 0;                 ///< points below each line
        float paragraphSpacing = 0;            ///< points below the last line of a paragraph, besides its line spacing
        float paragraphSpacingBefore = 0;      ///< points above the first line, unless it is the first of its container
        float minimumLineHeight = 0;           ///< points; 0: none
        float maximumLineHeight = 0;           ///< points; 0: none
        float lineHeightMultiple = 0;          ///< times the height of the fonts, before the limits; 0: once
        float firstLineHeadIndent = 0;         ///< points from the leading margin, the right one from right to left
        float headIndent = 0;                  ///< points from there, for the other lines
        float tailIndent = 0;                  ///< where lines end; 0 or less: points before the trailing margin
        std::vector<NSTextTab> tabStops = {};  ///< in the order of their locations
        float defaultTabInterval = 28;         ///< points; behind the last tab stop, tabs lead to multiples of it
        friend bool operator==(const Values&, const Values&) = default;
    };

    /// That of text which names none: `Values` as they are at the start.
    static Ref<NSParagraphStyle> defaultParagraphStyle();
    /// Any values will do.
    static Ref<NSParagraphStyle> paragraphStyleWithValues(const Values& values);

    /// As they were given.
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
