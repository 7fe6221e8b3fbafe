#include "QzAnno_AnnotatedTextFramework/palette/ValueConversion.h"

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

constexpr std::u16string_view kNamedColorTag = u"NSColor Named";
constexpr std::u16string_view kRGBColorTag = u"NSColor RGBCalibrated";

/// The two directions of one conversion; each returns null for a value of another kind.
struct idfp {
    Ref<NSDictionary> (*func)(const NSObject& value);
    Ref<NSObject> (*gen)(const NSDictionary& dictionary);

    Ref<NSDictionary> act(const NSObject& value) const { return func(value); }
    Ref<NSObject> create(const NSDictionary& dictionary) const { return gen(dictionary); }
};

template <auto generate>
Ref<NSObject> asObject(const NSDictionary& dictionary) {
    return generate(dictionary);
}

// Function addresses are constants, so the table exists before any code runs.
constexpr idfp safeColorp{safeColor, asObject<genColor>};
constexpr idfp safeBBox{safeBGBox, asObject<genBGBox>};
constexpr idfp toSafe[] = {safeColorp, safeBBox};

template <class... Classes>
bool isOneOf(const NSObject& value) {
    return (dynamic_cast<const Classes*>(&value) || ...);
}

bool isPropertyListClass(const NSObject& value) {
    return isOneOf<NSString, NSNumber, NSArray, NSDictionary, NSData, NSDate>(value);
}

float component(const NSDictionary& dictionary, const Ref<NSString>& name) {
    const auto number = numberFrom(dictionary.objectForKey(*name));
    return number ? number->floatValue() : 0.0f;
}

/// The part of a box appearance's tag after the prefix; null if it is empty or there is no prefix.
Ref<NSString> colorTagOfBBoxTag(const NSString& tag) {
    const uint32_t prefix = BBOXSTART->length();
    if (tag.length() <= prefix || !tag.characters().starts_with(BBOXSTART->characters())) return {};
    return tag.substringWithRange({prefix, tag.length() - prefix});
}

}  // namespace

Ref<NSObject> dehydrate(const Ref<NSObject>& value) {
    if (!value || isPropertyListClass(*value)) return value;
    for (const idfp& converter : toSafe) {
        if (auto safe = converter.act(*value)) return safe;
    }
    return {};
}

Ref<NSObject> rehydrate(const Ref<NSDictionary>& dictionary) {
    if (!dictionary) return {};
    for (const idfp& converter : toSafe) {
        if (auto value = converter.create(*dictionary)) return value;
    }
    return dictionary;
}

Ref<NSDictionary> safeColor(const NSObject& value) {
    const auto* color = dynamic_cast<const NSColor*>(&value);
    if (!color) return {};
    ObjectMap map;
    if (color->colorSpaceName()->isEqualToString(*NSNamedColorSpace)) {
        map.set(safeObjectName, NSString::stringWithCharacters(std::u16string(kNamedColorTag)));
        map.set("CatalogName"_ns, color->catalogNameComponent());
        map.set("ColorName"_ns, color->colorNameComponent());
    } else {
        const Ref<NSColor> rgb = color->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace);
        map.set(safeObjectName, NSString::stringWithCharacters(std::u16string(kRGBColorTag)));
        map.set("Red"_ns, NSNumber::numberWithFloat(rgb ? rgb->redComponent() : 0));
        map.set("Green"_ns, NSNumber::numberWithFloat(rgb ? rgb->greenComponent() : 0));
        map.set("Blue"_ns, NSNumber::numberWithFloat(rgb ? rgb->blueComponent() : 0));
        map.set("Alpha"_ns, NSNumber::numberWithFloat(rgb ? rgb->alphaComponent() : 0));
    }
    return NSDictionary::dictionaryWithMap(std::move(map));
}

Ref<NSColor> genColor(const NSDictionary& dictionary) {
    const auto tag = dictionary.objectForKey<NSString>(*safeObjectName);
    if (!tag) return {};
    if (tag->characters() == kNamedColorTag) {
        const auto catalog = dictionary.objectForKey<NSString>(*"CatalogName"_ns);
        const auto name = dictionary.objectForKey<NSString>(*"ColorName"_ns);
        return catalog && name ? NSColor::colorWithCatalogName(catalog, name) : Ref<NSColor>();
    }
    if (tag->characters() != kRGBColorTag) return {};
    return NSColor::colorWithCalibratedRed(component(dictionary, "Red"_ns), component(dictionary, "Green"_ns),
                                           component(dictionary, "Blue"_ns), component(dictionary, "Alpha"_ns));
}

Ref<NSDictionary> safeBGBox(const NSObject& value) {
    const auto* box = dynamic_cast<const QzBBoxInfo*>(&value);
    if (!box) return {};
    ObjectMap map = safeColor(*box->color())->map();
    const auto colorTag = std::static_pointer_cast<NSString>(map.find(*safeObjectName));
    map.set("bbtype"_ns, NSNumber::numberWithInt(box->type()));
    map.set(safeObjectName, NSString::stringWithCharacters(BBOXSTART->characters() + colorTag->characters()));
    return NSDictionary::dictionaryWithMap(std::move(map));
}

Ref<QzBBoxInfo> genBGBox(const NSDictionary& dictionary) {
    const auto tag = dictionary.objectForKey<NSString>(*safeObjectName);
    const Ref<NSString> colorTag = tag ? colorTagOfBBoxTag(*tag) : Ref<NSString>();
    if (!colorTag) return {};
    ObjectMap map = dictionary.map();
    map.set(safeObjectName, colorTag);
    const Ref<NSColor> color = genColor(*NSDictionary::dictionaryWithMap(std::move(map)));
    const auto type = numberFrom(dictionary.objectForKey(*"bbtype"_ns));
    return QzBBoxInfo::initWithColor(color, type ? type->intValue() : 0);
}

}  // namespace qz
