#include "QzAnno/platform/graphics/NSColor.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/graphics/NSGraphicsContext.h"

namespace qz {
namespace {

struct SystemColor {
    std::string_view name;
    float red, green, blue;
};

// The colours of a light user interface; all opaque.
constexpr std::array kSystemColors = {
    SystemColor{"alternateSelectedControlColor", 0.22f, 0.46f, 0.84f},
    SystemColor{"alternateSelectedControlTextColor", 1, 1, 1},
    SystemColor{"controlBackgroundColor", 1, 1, 1},
    SystemColor{"controlColor", 0.93f, 0.93f, 0.93f},
    SystemColor{"controlDarkShadowColor", 0, 0, 0},
    SystemColor{"controlHighlightColor", 0.89f, 0.89f, 0.89f},
    SystemColor{"controlLightHighlightColor", 1, 1, 1},
    SystemColor{"controlShadowColor", 0.6f, 0.6f, 0.6f},
    SystemColor{"controlTextColor", 0, 0, 0},
    SystemColor{"disabledControlTextColor", 0.5f, 0.5f, 0.5f},
    SystemColor{"gridColor", 0.8f, 0.8f, 0.8f},
    SystemColor{"headerColor", 0.93f, 0.93f, 0.93f},
    SystemColor{"headerTextColor", 0, 0, 0},
    SystemColor{"highlightColor", 1, 1, 1},
    SystemColor{"keyboardFocusIndicatorColor", 0.25f, 0.5f, 0.82f},
    SystemColor{"knobColor", 0.67f, 0.67f, 0.67f},
    SystemColor{"labelColor", 0, 0, 0},
    SystemColor{"scrollBarColor", 0.67f, 0.67f, 0.67f},
    SystemColor{"secondarySelectedControlColor", 0.83f, 0.83f, 0.83f},
    SystemColor{"selectedControlColor", 0.71f, 0.84f, 1},
    SystemColor{"selectedControlTextColor", 0, 0, 0},
    SystemColor{"selectedKnobColor", 0.5f, 0.5f, 0.5f},
    SystemColor{"selectedMenuItemColor", 0.22f, 0.46f, 0.84f},
    SystemColor{"selectedMenuItemTextColor", 1, 1, 1},
    SystemColor{"selectedTextBackgroundColor", 0.71f, 0.84f, 1},
    SystemColor{"selectedTextColor", 0, 0, 0},
    SystemColor{"shadowColor", 0, 0, 0},
    SystemColor{"textBackgroundColor", 1, 1, 1},
    SystemColor{"textColor", 0, 0, 0},
    SystemColor{"windowBackgroundColor", 0.93f, 0.93f, 0.93f},
    SystemColor{"windowFrameColor", 0.67f, 0.67f, 0.67f},
    SystemColor{"windowFrameTextColor", 0, 0, 0},
};

const SystemColor* systemColorNamed(const std::string& name) {
    const auto found = std::ranges::find(kSystemColors, name, &SystemColor::name);
    return found == kSystemColors.end() ? nullptr : &*found;
}

// Negative zero equals zero but hashes differently; NaN equals nothing.
float componentOf(float value) {
    return value > 0 ? std::min(value, 1.0f) : 0.0f;
}

Ref<NSString> presentName(Ref<NSString> name) {
    return name ? std::move(name) : NSString::string();
}

}  // namespace

NSColor::NSColor(Ref<NSString> catalogName, Ref<NSString> colorName)
    : space_(Space::named),
      catalogName_(presentName(std::move(catalogName))),
      colorName_(presentName(std::move(colorName))) {
    const bool isSystem = catalogName_->characters() == u"System";
    const SystemColor* const color = isSystem ? systemColorNamed(colorName_->utf8()) : nullptr;
    isKnown_ = color != nullptr;
    if (color) components_ = {color->red, color->green, color->blue, 1};
}

Ref<NSColor> NSColor::colorWithCalibratedRed(float red, float green, float blue, float alpha) {
    return Ref<NSColor>(
        new NSColor(Space::rgb, {componentOf(red), componentOf(green), componentOf(blue), componentOf(alpha)}));
}

Ref<NSColor> NSColor::colorWithCalibratedWhite(float white, float alpha) {
    const float level = componentOf(white);
    return Ref<NSColor>(new NSColor(Space::white, {level, level, level, componentOf(alpha)}));
}

Ref<NSColor> NSColor::colorWithCatalogName(Ref<NSString> catalogName, Ref<NSString> colorName) {
    return Ref<NSColor>(new NSColor(std::move(catalogName), std::move(colorName)));
}

Ref<NSColor> NSColor::blackColor() {
    return colorWithCalibratedWhite(0, 1);
}

Ref<NSColor> NSColor::whiteColor() {
    return colorWithCalibratedWhite(1, 1);
}

Ref<NSColor> NSColor::clearColor() {
    return colorWithCalibratedWhite(0, 0);
}

Ref<NSString> NSColor::colorSpaceName() const {
    switch (space_) {
        case Space::rgb:
            return NSCalibratedRGBColorSpace;
        case Space::white:
            return NSCalibratedWhiteColorSpace;
        case Space::named:
            break;
    }
    return NSNamedColorSpace;
}

Ref<NSString> NSColor::catalogNameComponent() const {
    return catalogName_;
}

Ref<NSString> NSColor::colorNameComponent() const {
    return colorName_;
}

Ref<NSColor> NSColor::colorUsingColorSpaceName(const NSString& colorSpaceName) const {
    if (colorSpaceName.isEqualToString(*this->colorSpaceName())) {
        return self();
    }
    if (!isKnown_) return {};
    const auto& [red, green, blue, alpha] = components_;
    if (colorSpaceName.isEqualToString(*NSCalibratedRGBColorSpace)) {
        return colorWithCalibratedRed(red, green, blue, alpha);
    }
    if (colorSpaceName.isEqualToString(*NSCalibratedWhiteColorSpace)) {
        // The grey of a colour as defined by the PostScript language; an RGB grey keeps its exact level.
        const bool isGrey = red == green && green == blue;
        return colorWithCalibratedWhite(isGrey ? red : 0.30f * red + 0.59f * green + 0.11f * blue, alpha);
    }
    return {};
}

float NSColor::redComponent() const {
    return components_.red;
}

float NSColor::greenComponent() const {
    return components_.green;
}

float NSColor::blueComponent() const {
    return components_.blue;
}

float NSColor::alphaComponent() const {
    return components_.alpha;
}

// Shared without const like every object; a colour is immutable.
Ref<NSColor> NSColor::self() const {
    return refTo(const_cast<NSColor&>(*this));
}

void NSColor::set() const {
    const auto context = NSGraphicsContext::currentContext();
    if (context) context->setColor(self());
}

bool NSColor::isEqual(const NSObject& other) const {
    const auto* const color = dynamic_cast<const NSColor*>(&other);
    if (!color || color->space_ != space_) return false;
    if (space_ != Space::named) return components_ == color->components_;
    return catalogName_->isEqualToString(*color->catalogName_) && colorName_->isEqualToString(*color->colorName_);
}

size_t NSColor::hash() const {
    size_t hash = static_cast<size_t>(space_);
    const auto add = [&](size_t part) { hash = hash * 0x9E3779B97F4A7C15u + part; };
    if (space_ == Space::named) {
        add(catalogName_->hash());
        add(colorName_->hash());
        return hash;
    }
    for (const float component : {components_.red, components_.green, components_.blue, components_.alpha}) {
        add(std::hash<float>()(component));
    }
    return hash;
}

std::string NSColor::description() const {
    std::string text = colorSpaceName()->utf8();
    const auto add = [&](const std::string& part) { text += ' ' + part; };
    if (space_ == Space::named) {
        add(catalogName_->utf8());
        add(colorName_->utf8());
        return text;
    }
    add(shortestDecimal(components_.red));
    if (space_ == Space::rgb) {
        add(shortestDecimal(components_.green));
        add(shortestDecimal(components_.blue));
    }
    add(shortestDecimal(components_.alpha));
    return text;
}

}  // namespace qz
