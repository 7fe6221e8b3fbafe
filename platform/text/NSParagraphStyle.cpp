#include "QzAnno/platform/text/NSParagraphStyle.h"

#include <array>
#include <functional>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"

namespace qz {

Ref<NSParagraphStyle> NSParagraphStyle::defaultParagraphStyle() {
    static const Ref<NSParagraphStyle> style = paragraphStyleWithValues({});
    return style;
}

Ref<NSParagraphStyle> NSParagraphStyle::paragraphStyleWithValues(const Values& values) {
    return Ref<NSParagraphStyle>(new NSParagraphStyle(values));
}

bool NSParagraphStyle::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* style = dynamic_cast<const NSParagraphStyle*>(&other);
    return style && style->values_ == values_;
}

size_t NSParagraphStyle::hash() const {
    return std::hash<float>()(values_.lineSpacing) * 31 + static_cast<size_t>(values_.alignment);
}

std::string NSParagraphStyle::description() const {
    static constexpr std::array kAlignments = {"left", "right", "center", "justified", "natural"};
    const auto alignment = static_cast<size_t>(values_.alignment);
    std::string text = "alignment ";
    text += alignment < kAlignments.size() ? kAlignments[alignment] : "unknown";
    const Values standard;
    const auto add = [&](const char* name, float value, float usual) {
        if (value != usual) text += std::string(", ") + name + ' ' + shortestDecimal(value);
    };
    add("line spacing", values_.lineSpacing, standard.lineSpacing);
    add("paragraph spacing", values_.paragraphSpacing, standard.paragraphSpacing);
    add("paragraph spacing before", values_.paragraphSpacingBefore, standard.paragraphSpacingBefore);
    add("minimum line height", values_.minimumLineHeight, standard.minimumLineHeight);
    add("maximum line height", values_.maximumLineHeight, standard.maximumLineHeight);
    add("line height multiple", values_.lineHeightMultiple, standard.lineHeightMultiple);
    add("first line head indent", values_.firstLineHeadIndent, standard.firstLineHeadIndent);
    add("head indent", values_.headIndent, standard.headIndent);
    add("tail indent", values_.tailIndent, standard.tailIndent);
    add("tab interval", values_.defaultTabInterval, standard.defaultTabInterval);
    for (const NSTextTab& tab : values_.tabStops) add("tab", tab.location, -1);
    if (values_.baseWritingDirection == NSWritingDirection::leftToRight) text += ", left to right";
    if (values_.baseWritingDirection == NSWritingDirection::rightToLeft) text += ", right to left";
    return text;
}

}  // namespace qz
