#include "QzAnno_AnnotatedTextFramework/palette/AttributeChecks.h"

#include <algorithm>
#include <cmath>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

using Messages = std::vector<std::string>;

/// The value as a `T`; when it is none, says so.
template <class T>
const T* required(const Ref<NSObject>& value, const char* kind, Messages& messages) {
    const auto* typed = dynamic_cast<const T*>(value.get());
    if (!typed) {
        messages.push_back(
            stringWithFormat("%s is needed, found %s; it is ignored", {kind, kindOfStoredValue(*value)}));
    }
    return typed;
}

/// The number that the value counts as. When it is none, or text with something behind the number, says so.
Ref<NSNumber> requiredNumber(const Ref<NSObject>& value, Messages& messages) {
    bool isWhole = true;
    Ref<NSNumber> number = numberFrom(value, &isWhole);
    if (!number)
        messages.push_back(
            stringWithFormat("a number is needed, found %s; it is ignored", {kindOfStoredValue(*value)}));
    else if (!isWhole)
        messages.push_back(
            stringWithFormat("%s is no number; %@ is used", {quotedExcerpt(value->description()), number}));
    return number;
}

Ref<NSNumber> requiredFiniteNumber(const Ref<NSObject>& value, Messages& messages) {
    Ref<NSNumber> number = requiredNumber(value, messages);
    if (!number || std::isfinite(number->floatValue())) return number;
    messages.push_back(stringWithFormat("a finite number is needed, found %@; it is ignored", {number}));
    return {};
}

void checkString(const Ref<NSObject>& value, Messages& messages) {
    required<NSString>(value, "a string", messages);
}

void checkNumber(const Ref<NSObject>& value, Messages& messages) {
    requiredFiniteNumber(value, messages);
}

void checkFontSize(const Ref<NSObject>& value, Messages& messages) {
    const Ref<NSNumber> number = requiredNumber(value, messages);
    if (!number) return;
    const float size = number->floatValue();
    if (size >= 0 && size <= NSFont::kPointSizeMax) return;
    messages.push_back(stringWithFormat("font size %@ is outside 0 to 10000 points; %s is used",
                                        {number, size > NSFont::kPointSizeMax ? "10000" : "the default size"}));
}

void checkHorizontalAlignment(const Ref<NSObject>& value, Messages& messages) {
    const Ref<NSNumber> number = requiredNumber(value, messages);
    if (!number) return;
    const int32_t alignment = number->intValue();
    if (alignment >= 0 && alignment <= static_cast<int32_t>(NSTextAlignment::natural)) return;
    messages.push_back(stringWithFormat("horizontal alignment %@ is outside 0 to 4; it is ignored", {number}));
}

void checkVerticalAlignment(const Ref<NSObject>& value, Messages& messages) {
    const Ref<NSNumber> number = requiredNumber(value, messages);
    if (!number || (number->intValue() >= 0 && number->intValue() <= 2)) return;
    messages.push_back(
        stringWithFormat("vertical alignment %@ is outside 0 to 2; the text is placed at the top", {number}));
}

void checkWidth(const Ref<NSObject>& value, Messages& messages) {
    const Ref<NSNumber> number = requiredFiniteNumber(value, messages);
    if (!number || number->floatValue() >= 0) return;
    messages.push_back(stringWithFormat("width %@ is below 0; the layer is not drawn", {number}));
}

void checkMargins(const Ref<NSObject>& value, Messages& messages) {
    const auto* margins = required<NSArray>(value, "an array of four numbers", messages);
    if (!margins) return;
    const auto isFiniteNumber = [](const Ref<NSObject>& element) {
        const Ref<NSNumber> number = numberFrom(element);
        return number && std::isfinite(number->floatValue());
    };
    const size_t count = margins->count();
    const auto found = static_cast<size_t>(std::ranges::count_if(margins->elements(), isFiniteNumber));
    if (count == 4 && found == 4) return;
    const bool usable =
        count > 4 && std::ranges::all_of(margins->elements().begin(), margins->elements().begin() + 4, isFiniteNumber);
    messages.push_back(
        stringWithFormat("margins need four numbers, found %s; %s",
                         {std::to_string(found), usable ? "the first four are used" : "the margins are ignored"}));
}

void checkRectangle(const Ref<NSObject>& value, Messages& messages) {
    const auto* text = required<NSString>(value, "a rectangle", messages);
    if (!text || wellFormedRectFromString(*text)) return;
    messages.push_back("a rectangle {{x, y}, {width, height}} is needed, found " + quotedExcerpt(text->utf8()) +
                       "; it is ignored");
}

void checkPoint(const Ref<NSObject>& value, Messages& messages) {
    const auto* text = required<NSString>(value, "a point", messages);
    if (!text || wellFormedPointFromString(*text)) return;
    messages.push_back("a point {x, y} is needed, found " + quotedExcerpt(text->utf8()) + "; it is ignored");
}

void checkComponent(const NSDictionary& color, const char* name, Messages& messages) {
    const Ref<NSObject> value = color.objectForKey(*NSString::stringWithUTF8String(name));
    const Ref<NSNumber> number = numberFrom(value);
    if (!number) {
        const std::string found = value ? kindOfStoredValue(*value) : "nothing";
        messages.push_back(stringWithFormat("the component %s needs a number, found %s; 0 is used", {name, found}));
        return;
    }
    const float component = number->floatValue();
    if (component >= 0 && component <= 1) return;
    messages.push_back(stringWithFormat("the component %s is %@, outside 0 to 1; %s is used",
                                        {name, number, component > 1 ? "1" : "0"}));
}

/// `color` is what the library makes of the dictionary.
void checkColorForm(const NSDictionary& dictionary, const NSColor& color, Messages& messages) {
    if (color.colorSpaceName()->isEqualToString(*NSNamedColorSpace)) {
        if (color.colorUsingColorSpaceName(*NSCalibratedRGBColorSpace)) return;
        messages.push_back("the colour " + quotedExcerpt(color.colorNameComponent()->utf8()) + " of the catalogue " +
                           quotedExcerpt(color.catalogNameComponent()->utf8()) +
                           " is not known here; nothing is drawn in it");
        return;
    }
    for (const char* name : {"Red", "Green", "Blue", "Alpha"}) checkComponent(dictionary, name, messages);
}

void checkColor(const Ref<NSObject>& value, Messages& messages) {
    const auto* dictionary = required<NSDictionary>(value, "a colour", messages);
    if (!dictionary) return;
    const Ref<NSColor> color = genColor(*dictionary);
    if (color) return checkColorForm(*dictionary, *color, messages);
    messages.push_back(stringWithFormat("a colour is needed, found %s; it is ignored", {kindOfStoredValue(*value)}));
}

void checkBoxAppearance(const Ref<NSObject>& value, Messages& messages) {
    const auto* dictionary = required<NSDictionary>(value, "a box appearance", messages);
    if (!dictionary) return;
    const Ref<QzBBoxInfo> box = genBGBox(*dictionary);
    if (!box) {
        messages.push_back(
            stringWithFormat("a box appearance is needed, found %s; it is ignored", {kindOfStoredValue(*value)}));
        return;
    }
    checkColorForm(*dictionary, *box->color(), messages);
    if (numberFrom(dictionary->objectForKey(*"bbtype"_ns))) return;
    messages.push_back("the type of the box is not a number; no box is drawn");
}

struct Rule {
    Ref<NSString> name;
    void (*check)(const Ref<NSObject>& value, Messages& messages);
};

const std::vector<Rule>& rules() {
    static const std::vector<Rule> table = {
        {QzFontAttribute, checkString},
        {QzFontNameAttribute, checkString},
        {QzFontStyleAttribute, checkString},
        {QzFontSizeAttribute, checkFontSize},
        {QzBoldAttribute, checkNumber},
        {QzItalicAttribute, checkNumber},
        {QzUnderlineAttribute, checkNumber},
        {QzStrikeThroughAttribute, checkNumber},
        {QzTextColorAttribute, checkColor},
        {QzLeadingAttribute, checkNumber},
        {QzHorizontalAlignmentAttribute, checkHorizontalAlignment},
        {QzVerticalAlignmentAttribute, checkVerticalAlignment},
        {QzBoundingMarginsAttribute, checkMargins},
        {QzBoundingBoxAttribute, checkRectangle},
        {QzTextBoundingBoxAppearanceAttribute, checkBoxAppearance},
        {QzBackgroundColorAttribute, checkColor},
        {QzBackgroundOffsetAttribute, checkPoint},
        {QzBackgroundWidthAttribute, checkWidth},
        {QzBackground2ColorAttribute, checkColor},
        {QzBackground2OffsetAttribute, checkPoint},
        {QzBackground2WidthAttribute, checkWidth},
        {NSKernAttributeName, checkNumber},
        {NSObliquenessAttributeName, checkNumber},
        {NSBaselineOffsetAttributeName, checkNumber},
    };
    return table;
}

}  // namespace

void checkAttribute(const NSString& name, const Ref<NSObject>& value, std::vector<std::string>& messages) {
    const auto rule =
        std::ranges::find_if(rules(), [&](const Rule& candidate) { return candidate.name->isEqual(name); });
    if (rule != rules().end()) rule->check(value, messages);
}

std::string kindOfStoredValue(const NSObject& value) {
    if (const auto* dictionary = dynamic_cast<const NSDictionary*>(&value)) {
        if (genColor(*dictionary)) return "a colour";
        return genBGBox(*dictionary) ? "a box appearance" : "a dictionary";
    }
    const std::string className = value.className();
    if (className == "NSString") return "a string";
    if (className == "NSNumber") return "a number";
    if (className == "NSArray") return "an array";
    if (className == "NSDate") return "a date";
    return className == "NSData" ? "data" : "a value of class " + className;
}

}  // namespace qz
