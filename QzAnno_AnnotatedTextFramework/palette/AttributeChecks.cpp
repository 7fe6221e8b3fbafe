#include "QzAnno_AnnotatedTextFramework/palette/AttributeChecks.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

using Messages = std::vector<std::string>;

/// The value as a `T`; adds a message if it is not one.
template <class T>
const T* required(const Ref<NSObject>& value, const char* kind, Messages& messages) {
    const auto* typed = dynamic_cast<const T*>(value.get());
    if (!typed) {
        messages.push_back(
            stringWithFormat("%s is needed, found %s; it is ignored", {kind, kindOfStoredValue(*value)}));
    }
    return typed;
}

/// The number that the value counts as. Adds a message if it is not a number, or text with more than a number.
Ref<NSNumber> requiredNumber(const Ref<NSObject>& value, Messages& messages) {
    bool isWhole = true;
    Ref<NSNumber> number = numberFrom(value, &isWhole);
    if (!number)
        messages.push_back(
            stringWithFormat("a number is needed, found %s; it is ignored", {kindOfStoredValue(*value)}));
    else if (!isWhole)
        messages.push_back(
            stringWithFormat("%s is not a number; %@ is used", {quotedExcerpt(value->description()), number}));
    return number;
}

void checkNumber(const Attribute& attribute, const Ref<NSObject>& value, Messages& messages) {
    const Ref<NSNumber> number = requiredNumber(value, messages);
    if (!number) return;
    const bool isChoice = attribute.kind == Attribute::Kind::choice;
    const double given = isChoice ? double(number->intValue()) : double{number->floatValue()};
    const bool hasMost = std::isfinite(attribute.most);
    if (!hasMost && !std::isfinite(given)) {
        messages.push_back(stringWithFormat("a finite number is needed, found %@; it is ignored", {number}));
        return;
    }
    if (given >= attribute.least && given <= attribute.most) return;
    std::string range = "below " + shortestDecimal(attribute.least);
    if (hasMost) {
        range = "outside " + shortestDecimal(attribute.least) + " to " + shortestDecimal(attribute.most);
        if (*attribute.unit) range += std::string(" ") + attribute.unit;
    }
    std::string label = attribute.label;
    label[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(label[0])));
    messages.push_back(stringWithFormat(
        "%s %@ is %s; %s", {label, number, range, given > attribute.most ? attribute.tooHigh : attribute.tooLow}));
}

void checkMargins(const Ref<NSObject>& value, Messages& messages) {
    const auto* margins = required<NSArray>(value, "an array of four numbers", messages);
    if (!margins) return;
    const auto isFiniteNumber = [](const Ref<NSObject>& element) {
        const Ref<NSNumber> number = numberFrom(element);
        return number && std::isfinite(number->floatValue());
    };
    const auto found = static_cast<size_t>(std::ranges::count_if(margins->elements(), isFiniteNumber));
    const bool isUsable = marginsFrom(value).has_value();
    if (isUsable && margins->count() == 4) return;
    messages.push_back(
        stringWithFormat("margins need four numbers, found %s; %s",
                         {std::to_string(found), isUsable ? "the first four are used" : "the margins are ignored"}));
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

/// `color` is the colour that the library reads from the dictionary.
void checkColorForm(const NSDictionary& dictionary, const NSColor& color, Messages& messages) {
    if (color.colorSpaceName()->isEqualToString(*NSNamedColorSpace)) {
        if (color.colorUsingColorSpaceName(*NSCalibratedRGBColorSpace)) return;
        messages.push_back("the colour " + quotedExcerpt(color.colorNameComponent()->utf8()) + " of the catalogue " +
                           quotedExcerpt(color.catalogNameComponent()->utf8()) + " is unknown; nothing is drawn in it");
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

}  // namespace

void checkAttribute(const NSString& name, const Ref<NSObject>& value, std::vector<std::string>& messages) {
    using enum Attribute::Kind;
    const Attribute* const attribute = attributeNamed(name);
    if (!attribute) return;
    switch (attribute->kind) {
        case string:
            required<NSString>(value, "a string", messages);
            break;
        case number:
        case flag:
        case choice:
            return checkNumber(*attribute, value, messages);
        case color:
            return checkColor(value, messages);
        case point:
            return checkPoint(value, messages);
        case rectangle:
            return checkRectangle(value, messages);
        case margins:
            return checkMargins(value, messages);
        case box:
            return checkBoxAppearance(value, messages);
    }
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
