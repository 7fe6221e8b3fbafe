#include "platform/text/NSParagraphStyle.h"

#include <array>
#include <functional>

#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSNumber.h"

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
    return stringWithFormat("alignment %@, line spacing %@, paragraph spacing %@, line height %@ to %@",
                            {alignment < kAlignments.size() ? kAlignments[alignment] : "unknown",
                             shortestDecimal(values_.lineSpacing), shortestDecimal(values_.paragraphSpacing),
                             shortestDecimal(values_.minimumLineHeight), shortestDecimal(values_.maximumLineHeight)});
}

}  // namespace qz
