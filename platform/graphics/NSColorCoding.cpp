#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {
namespace {

// Device spaces are read as calibrated ones, and CMYK as RGB, since colours have no other spaces here.
enum class Tag : int32_t { calibratedRGB = 1, deviceRGB, calibratedWhite, deviceWhite, deviceCMYK, named };

void encodeTag(NSArchiver& archiver, Tag tag) {
    archiver.encodeValueOfObjCType("c", static_cast<int32_t>(tag));
}

void encodeColor(const NSObject& object, NSArchiver& archiver) {
    const auto& color = static_cast<const NSColor&>(object);
    const double red = color.redComponent();
    const double alpha = color.alphaComponent();
    if (color.colorNameComponent()) {
        encodeTag(archiver, Tag::named);
        // For a reader that does not know the name; null if we do not know it either.
        const Ref<NSColor> otherwise = color.colorUsingColorSpaceName(*NSCalibratedRGBColorSpace);
        archiver.encodeValuesOfObjCTypes("@@@", {color.catalogNameComponent(), color.colorNameComponent(), otherwise});
    } else if (color.colorSpaceName()->isEqualToString(*NSCalibratedWhiteColorSpace)) {
        encodeTag(archiver, Tag::calibratedWhite);
        archiver.encodeValuesOfObjCTypes("ff", {red, alpha});
    } else {
        encodeTag(archiver, Tag::calibratedRGB);
        archiver.encodeValuesOfObjCTypes("ffff",
                                         {red, double{color.greenComponent()}, double{color.blueComponent()}, alpha});
    }
}

Ref<NSColor> decodeRGB(NSUnarchiver& unarchiver) {
    float red = 0, green = 0, blue = 0, alpha = 0;
    if (!unarchiver.decodeValuesOfObjCTypes("ffff", {&red, &green, &blue, &alpha})) return {};
    return NSColor::colorWithCalibratedRed(red, green, blue, alpha);
}

Ref<NSColor> decodeWhite(NSUnarchiver& unarchiver) {
    float white = 0, alpha = 0;
    if (!unarchiver.decodeValuesOfObjCTypes("ff", {&white, &alpha})) return {};
    return NSColor::colorWithCalibratedWhite(white, alpha);
}

Ref<NSColor> decodeCMYK(NSUnarchiver& unarchiver) {
    float cyan = 0, magenta = 0, yellow = 0, black = 0, alpha = 0;
    if (!unarchiver.decodeValuesOfObjCTypes("fffff", {&cyan, &magenta, &yellow, &black, &alpha})) return {};
    const float light = 1 - black;
    return NSColor::colorWithCalibratedRed((1 - cyan) * light, (1 - magenta) * light, (1 - yellow) * light, alpha);
}

Ref<NSColor> decodeNamed(NSUnarchiver& unarchiver) {
    Ref<NSObject> catalogObject, nameObject, otherwiseObject;
    if (!unarchiver.decodeValuesOfObjCTypes("@@@", {&catalogObject, &nameObject, &otherwiseObject})) return {};
    const auto catalog = std::dynamic_pointer_cast<NSString>(catalogObject);
    const auto name = std::dynamic_pointer_cast<NSString>(nameObject);
    const auto otherwise = std::dynamic_pointer_cast<NSColor>(otherwiseObject);
    if (!catalog || !name || (otherwiseObject && !otherwise)) {
        unarchiver.fail("a named colour needs its catalogue, its name and a colour");
        return {};
    }
    const Ref<NSColor> color = NSColor::colorWithCatalogName(catalog, name);
    const bool isKnown = color->colorUsingColorSpaceName(*NSCalibratedRGBColorSpace) != nullptr;
    return isKnown || !otherwise ? color : otherwise;
}

Ref<NSObject> decodeColor(NSUnarchiver& unarchiver) {
    int32_t tag = 0;
    if (!unarchiver.decodeValueOfObjCType("c", &tag)) return {};
    switch (static_cast<Tag>(tag)) {
        case Tag::calibratedRGB:
        case Tag::deviceRGB:
            return decodeRGB(unarchiver);
        case Tag::calibratedWhite:
        case Tag::deviceWhite:
            return decodeWhite(unarchiver);
        case Tag::deviceCMYK:
            return decodeCMYK(unarchiver);
        case Tag::named:
            return decodeNamed(unarchiver);
    }
    unarchiver.fail("a colour of the kind " + std::to_string(tag) + "; only kinds 1 to 6 are known");
    return {};
}

const CodedClassRegistration registration({.name = "NSColor", .encode = encodeColor, .decode = decodeColor});

}  // namespace
}  // namespace qz
