#include "captions/AssPalette.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "captions/AssFonts.h"
#include "captions/AssLook.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

constexpr double kShorterSide = 1080;

Ref<NSNumber> number(double value) {
    return NSNumber::numberWithFloat(static_cast<float>(value));
}

/// How bold and italic are expressed.
enum class Traits { byFontName, byAttributes };

void setFont(const AssStyle& style, double scale, Traits traits, const NSFont::Library& library,
             ObjectMap& attributes) {
    const bool isByName = traits == Traits::byFontName;
    const Ref<NSString> name =
        fontNameOf({style.fontName, isByName && style.isBold ? 700 : 400, isByName && style.isItalic}, library);
    attributes.set(QzFontAttribute, name);
    Ref<NSFont> font = NSFont::fontWithName(*name, 0, library);
    if (!font) font = NSFont::titleBarFontOfSize(0, library);
    // Sizes in scripts are rounded in another unit; differences below a tenth of a point are invisible.
    const double points = std::round(10 * style.fontSize * scale / assLineHeightOf(*font)) / 10;
    attributes.set(QzFontSizeAttribute, number(std::clamp(points, 1.0, double{Limits::kFontPointsMax})));
}

/// Sets a transparent layer, so that the global style's does not show.
void setLayers(const AssStyle& style, double scale, ObjectMap& attributes) {
    const bool isBoxed = style.borderStyle == 3 || style.borderStyle == 4;
    const auto box = style.borderStyle == 4 ? style.back : style.outline;
    attributes.set(QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(colorOf(box), isBoxed ? 2 : 0));
    const double width = isBoxed ? 0 : 2 * style.outlineWidth * scale;
    attributes.set(QzBackgroundColorAttribute, width > 0 ? colorOf(style.outline) : NSColor::clearColor());
    attributes.set(QzBackgroundWidthAttribute, number(width));
    const double shadow = isBoxed ? 0 : style.shadow * scale;
    attributes.set(QzBackground2ColorAttribute, shadow > 0 ? colorOf(style.back) : NSColor::clearColor());
    attributes.set(QzBackground2WidthAttribute, number(width));
    const std::string offset = shortestDecimal(static_cast<float>(shadow));
    attributes.set(QzBackground2OffsetAttribute, NSString::stringWithUTF8String("{" + offset + ", " + offset + "}"));
}

ObjectMap attributesOf(const AssStyle& style, double scale, Traits traits, const NSFont::Library& library) {
    ObjectMap attributes;
    setFont(style, scale, traits, library, attributes);
    if (traits == Traits::byAttributes) {
        attributes.set(QzBoldAttribute, NSNumber::numberWithInt(style.isBold));
        attributes.set(QzItalicAttribute, NSNumber::numberWithInt(style.isItalic));
    }
    attributes.set(QzUnderlineAttribute, NSNumber::numberWithInt(style.isUnderlined));
    attributes.set(QzStrikeThroughAttribute, NSNumber::numberWithInt(style.isStruck));
    attributes.set(QzTextColorAttribute, colorOf(style.primary));
    attributes.set(NSKernAttributeName, number(style.spacing * scale));
    const int column = (style.alignment - 1) % 3;
    const auto alignment = column == 0   ? NSTextAlignment::left
                           : column == 1 ? NSTextAlignment::center
                                         : NSTextAlignment::right;
    attributes.set(QzHorizontalAlignmentAttribute, NSNumber::numberWithInt(static_cast<int32_t>(alignment)));
    attributes.set(QzVerticalAlignmentAttribute, NSNumber::numberWithInt(2 - (style.alignment - 1) / 3));
    const double vertical = style.marginVertical * scale;
    const auto side = [scale](double margin) { return std::max(0.0, margin * scale - kLinePaddingOfAss); };
    const Margins margins = {side(style.marginLeft), side(style.marginRight), vertical, vertical};
    attributes.set(QzBoundingMarginsAttribute, margins.stored());
    setLayers(style, scale, attributes);
    return attributes;
}

ObjectMap differences(const ObjectMap& attributes, const ObjectMap& below) {
    ObjectMap different;
    for (const ObjectMap::Entry& entry : attributes.entries()) {
        const Ref<NSObject> under = below.find(*entry.key);
        // Boxes are compared by identity.
        const bool isSame =
            under && (areEqual(under, entry.value) || under->description() == entry.value->description());
        if (!isSame) different.set(entry.key, entry.value);
    }
    return different;
}

}  // namespace

Ref<NSColor> colorOf(const CaptionColour& colour) {
    const auto part = [](uint8_t byte) { return static_cast<float>(byte) / 255; };
    return NSColor::colorWithCalibratedRed(part(colour.red), part(colour.green), part(colour.blue), part(colour.alpha));
}

ObjectMap attributesOfAssStyle(const AssStyle& style, double scale, const NSFont::Library& library) {
    return attributesOf(style, scale, Traits::byAttributes, library);
}

ObjectMap differencesOfAssStyle(const AssStyle& style, const AssStyle& global, double scale,
                                const NSFont::Library& library) {
    return differences(attributesOfAssStyle(style, scale, library), attributesOfAssStyle(global, scale, library));
}

Ref<QzAnnoPalette> paletteOfAss(const AssScript& script, const NSFont::Library& library,
                                std::vector<std::string>& losses) {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    palette->setFontLibrary(library);
    const AssStyle* const global = script.globalStyle();
    if (!global) return palette;
    const double scale = kShorterSide / std::min(script.width, script.height);
    std::set<std::string> told;
    const auto file = [&](const Ref<const QzAnno>& anno, const AssStyle& style, const ObjectMap& below) {
        const Ref<QzMutableAnno> changed = anno->mutableCopy();
        const ObjectMap attributes = attributesOf(style, scale, Traits::byFontName, library);
        changed->setAttributes(NSDictionary::dictionaryWithMap(differences(attributes, below)));
        palette->replaceAnno(changed);
        for (const std::string& name : style.unsupported) {
            if (told.insert(name).second) losses.push_back(name + " of " + style.name + " cannot be held in a palette");
        }
    };
    // Without the attribute there is no line.
    ObjectMap bare;
    for (const Ref<NSString>& line : {QzUnderlineAttribute, QzStrikeThroughAttribute})
        bare.set(line, NSNumber::numberWithInt(0));
    file(palette->lookupAnno({}), *global, bare);
    const ObjectMap globals = attributesOf(*global, scale, Traits::byFontName, library);
    for (const AssStyle& style : script.styles) {
        // Of styles with the same name, the last counts.
        if (&style == global || script.styleNamed(style.name) != &style) continue;
        const Ref<const QzAnno> anno = palette->createAnno(NSString::stringWithUTF8String(style.name));
        if (anno)
            file(anno, style, globals);
        else
            losses.push_back("the style " + style.name + " is left out; a palette keeps that name for its global one");
    }
    palette->undoManager()->removeAllActions();
    return palette;
}

}  // namespace qz
