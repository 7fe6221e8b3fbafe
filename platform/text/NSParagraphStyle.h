#pragma once

#include "platform/foundation/NSObject.h"

namespace qz {

/// The platform's text alignments; the numbers are stored in palettes.
enum class NSTextAlignment : int32_t { left = 0, right = 1, center = 2, justified = 3, natural = 4 };
enum class NSWritingDirection : int32_t { natural = -1, leftToRight = 0, rightToLeft = 1 };

/// How the lines of a paragraph are placed; immutable. To vary one, copy its `values()`, change that, make a new style.
/// The style of a paragraph is that of its first character. Equal when the values are.
class NSParagraphStyle final : public NSObject {
public:
    struct Values {
        NSTextAlignment alignment = NSTextAlignment::natural;
        NSWritingDirection baseWritingDirection = NSWritingDirection::natural;
        float lineSpacing = 0;        ///< points below each line
        float paragraphSpacing = 0;   ///< points below the last line of a paragraph, besides its line spacing
        float minimumLineHeight = 0;  ///< points; 0: none
        float maximumLineHeight = 0;  ///< points; 0: none
        friend bool operator==(const Values&, const Values&) = default;
    };

    static Ref<NSParagraphStyle> defaultParagraphStyle();
    static Ref<NSParagraphStyle> paragraphStyleWithValues(const Values& values);

    const Values& values() const { return values_; }
    NSTextAlignment alignment() const { return values_.alignment; }
    float lineSpacing() const { return values_.lineSpacing; }
    float paragraphSpacing() const { return values_.paragraphSpacing; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSParagraphStyle"; }

private:
    explicit NSParagraphStyle(const Values& values) : values_(values) {}

    const Values values_;
};

}  // namespace qz
