#include "captions/AssLook.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "platform/graphics/StraightColor.h"

namespace qz {
namespace {

CaptionColour assColourOf(const NSColor& color) {
    const auto [red, green, blue, alpha] = straightColorOf(color);
    return {red, green, blue, alpha};
}

/// Palettes may hold any number; none that is drawn is larger.
double bounded(double length) {
    constexpr double kMost = 1e6;
    return std::isfinite(length) ? std::clamp(length, -kMost, kMost) : 0;
}

double numberUnder(const NSDictionary& attributes, const Ref<NSString>& name) {
    const auto number = numberFrom(attributes.objectForKey(*name));
    return number ? bounded(number->doubleValue()) : 0;
}

/// A layer that shows, with its width on each side.
struct Layer {
    bool isShown = false;
    CaptionColour colour;
    double width = 0;
    double x = 0;
    double y = 0;

    bool isCentred() const { return std::abs(x) < 0.5 && std::abs(y) < 0.5; }
};

Layer layerOf(const NSDictionary& attributes, const Ref<NSString>& colorName, const Ref<NSString>& widthName,
              const Ref<NSString>& offsetName) {
    const auto color = attributes.objectForKey<NSColor>(*colorName);
    if (!color || color->alphaComponent() == 0) return {};
    const auto offset = attributes.objectForKey<NSString>(*offsetName);
    const NSPoint point = offset ? NSPointFromString(*offset) : NSPoint{};
    return {true, assColourOf(*color), std::max(0.0, numberUnder(attributes, widthName) / 2), bounded(point.x),
            bounded(point.y)};
}

void readLayers(const NSDictionary& attributes, AssLook& look, std::set<std::string>& losses) {
    Layer first =
        layerOf(attributes, QzBackgroundColorAttribute, QzBackgroundWidthAttribute, QzBackgroundOffsetAttribute);
    Layer second =
        layerOf(attributes, QzBackground2ColorAttribute, QzBackground2WidthAttribute, QzBackground2OffsetAttribute);
    const auto box = attributes.objectForKey<QzBBoxInfo>(*QzTextBoundingBoxAppearanceAttribute);
    if (box && box->type() == 1) losses.insert("boxes that are outlined are left out; only filled ones have a form");
    if (box && box->type() > 1 && box->color()->alphaComponent() > 0) {
        look.isBoxed = true;
        look.outline = assColourOf(*box->color());
        look.outlineWidth = kLinePaddingOfAss;
        losses.insert("boxes are drawn line by line, not round the whole text");
        if (first.isShown || second.isShown)
            losses.insert("letters in a filled box lose their outline and shadow; a style has either");
        return;
    }
    Layer* outline = first.isShown && first.isCentred() ? &first : nullptr;
    if (!outline && second.isShown && second.isCentred() && !first.isShown) outline = &second;
    if (outline) {
        look.outline = outline->colour;
        look.outlineWidth = outline->width;
        outline->isShown = false;
    }
    Layer* const shadow = second.isShown && !second.isCentred() ? &second
                          : first.isShown && !first.isCentred() ? &first
                                                                : nullptr;
    if (shadow) {
        look.back = shadow->colour;
        look.shadowX = shadow->x;
        look.shadowY = shadow->y;
        if (std::abs(shadow->width - look.outlineWidth) > 0.5)
            losses.insert("shadows are as wide as the outline, whatever width the palette gives them");
        shadow->isShown = false;
    }
    if (first.isShown || second.isShown)
        losses.insert("a second outline, or a second shadow, is left out; a style has one of each");
}

void readPlace(const NSDictionary& attributes, NSSize screen, AssLook& look, std::set<std::string>& losses) {
    using enum NSTextAlignment;
    const auto number = numberFrom(attributes.objectForKey(*QzHorizontalAlignmentAttribute));
    const auto alignment = number ? static_cast<NSTextAlignment>(number->intValue()) : natural;
    const int column = alignment == center ? 2 : alignment == right ? 3 : 1;
    if (alignment == justified) losses.insert("justified text is set to the left");
    const double row = numberUnder(attributes, QzVerticalAlignmentAttribute);
    look.alignment = column + (row < 0.5 ? 6 : row < 1.5 ? 3 : 0);

    const auto margins = attributes.objectForKey<NSArray>(*QzBoundingMarginsAttribute);
    const auto text = attributes.objectForKey<NSString>(*QzBoundingBoxAttribute);
    double* const sides[] = {&look.marginLeft, &look.marginRight, &look.marginTop, &look.marginBottom};
    if (margins && margins->count() >= 4) {
        for (size_t i = 0; i < 4; ++i) {
            const auto margin = numberFrom(margins->objectAtIndex(i));
            *sides[i] = margin ? std::max(0.0, bounded(margin->doubleValue())) : 0;
        }
    } else if (const auto box = text ? wellFormedRectFromString(*text) : std::nullopt) {
        const double values[] = {
            double{box->origin.x} * double{screen.width}, (1 - double{box->maxX()}) * double{screen.width},
            double{box->origin.y} * double{screen.height}, (1 - double{box->maxY()}) * double{screen.height}};
        for (size_t i = 0; i < 4; ++i) *sides[i] = std::max(0.0, bounded(values[i]));
    }
    look.marginLeft += kLinePaddingOfAss;
    look.marginRight += kLinePaddingOfAss;
}

void readSlant(const NSDictionary& attributes, AssLook& look, std::set<std::string>& losses) {
    const double slant = numberUnder(attributes, NSObliquenessAttributeName);
    if (slant > 0 && !look.font.isItalic) {
        // A shear for a part of a line moves what it begins with over the blank before it.
        look.font.isItalic = true;
        losses.insert("slanted text is written as italic, whose angle is the player's");
    }
    look.slant = std::max(0.0, -slant);
}

std::string hex(uint32_t value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "&H%0*X", digits, static_cast<unsigned>(value));
    return text;
}

uint32_t bits(const CaptionColour& colour) {
    return static_cast<uint32_t>(colour.blue << 16 | colour.green << 8 | colour.red);
}

std::string writtenColour(const CaptionColour& colour) {
    return hex(static_cast<uint32_t>(255 - colour.alpha) << 24 | bits(colour), 8);
}

std::string colourChange(const char* number, const CaptionColour& from, const CaptionColour& to) {
    std::string text;
    if (bits(from) != bits(to)) text += std::string("\\") + number + "c" + hex(bits(to), 6) + "&";
    if (from.alpha != to.alpha) text += std::string("\\") + number + "a" + hex(255u - to.alpha, 2) + "&";
    return text;
}

std::string lengthChange(const char* name, double from, double to) {
    return shortNumber(from) == shortNumber(to) ? "" : std::string("\\") + name + shortNumber(to);
}

}  // namespace

std::string shortNumber(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f", value);
    std::string number = text;
    number.erase(number.find_last_not_of('0') + 1);
    if (number.ends_with('.')) number.pop_back();
    return number == "-0" ? "0" : number;
}

AssLook assLookOf(const NSDictionary& attributes, NSSize screen, std::set<std::string>& losses) {
    AssLook look;
    if (const auto font = attributes.objectForKey<NSFont>(*NSFontAttributeName)) {
        look.font = assFontOf(*font);
        look.fontSize = double{font->pointSize()} * assLineHeightOf(*font);
    }
    const auto color = attributes.objectForKey<NSColor>(*QzTextColorAttribute);
    look.primary = color ? assColourOf(*color) : CaptionColour{0, 0, 0, 255};
    look.spacing = numberUnder(attributes, NSKernAttributeName);
    look.isUnderlined = numberUnder(attributes, QzUnderlineAttribute) != 0;
    look.isStruck = numberUnder(attributes, QzStrikeThroughAttribute) != 0;
    readSlant(attributes, look, losses);
    readLayers(attributes, look, losses);
    readPlace(attributes, screen, look, losses);
    if (numberUnder(attributes, QzLeadingAttribute) != 0)
        losses.insert("the leading is left out; lines stand as close as their fonts have it");
    if (numberUnder(attributes, NSBaselineOffsetAttributeName) != 0)
        losses.insert("raised and lowered text stands on the line");
    return look;
}

AssStyle styleOfLook(const std::string& name, const AssLook& look) {
    AssStyle style;
    style.name = name;
    style.fontName = look.font.family;
    style.fontSize = look.fontSize;
    style.primary = look.primary;
    style.outline = look.outline;
    style.back = look.back;
    style.isBold = look.font.weight >= 600;
    style.isItalic = look.font.isItalic;
    style.isUnderlined = look.isUnderlined;
    style.isStruck = look.isStruck;
    style.spacing = look.spacing;
    style.borderStyle = look.isBoxed ? 3 : 1;
    style.outlineWidth = look.outlineWidth;
    style.shadow = std::max({0.0, look.shadowX, look.shadowY});
    style.alignment = look.alignment;
    style.marginLeft = look.marginLeft;
    style.marginRight = look.marginRight;
    style.marginVertical = look.alignment >= 7 ? look.marginTop : look.marginBottom;
    return style;
}

AssLook lookOfStyle(const AssStyle& style, const AssLook& written) {
    AssLook look = written;
    look.font.weight = style.isBold ? 700 : 400;
    look.shadowX = look.shadowY = style.shadow;
    look.slant = 0;
    return look;
}

std::string writtenStyle(const AssStyle& style) {
    const auto flag = [](bool isSet) { return isSet ? "-1" : "0"; };
    std::string text = style.name + "," + style.fontName + "," + shortNumber(style.fontSize);
    for (const CaptionColour& colour : {style.primary, style.primary, style.outline, style.back})
        text += "," + writtenColour(colour);
    for (const bool isSet : {style.isBold, style.isItalic, style.isUnderlined, style.isStruck})
        text += std::string(",") + flag(isSet);
    text += ",100,100";
    text += "," + shortNumber(style.spacing) + ",0," + std::to_string(style.borderStyle);
    for (const double length : {style.outlineWidth, style.shadow}) text += "," + shortNumber(length);
    text += "," + std::to_string(style.alignment);
    // Margins are whole numbers to players.
    for (const double margin : {style.marginLeft, style.marginRight, style.marginVertical})
        text += "," + std::to_string(std::lround(margin));
    // Players then find the direction of each line.
    return text + ",-1";
}

std::string overridesBetween(const AssLook& from, const AssLook& to) {
    std::string text;
    if (from.font.family != to.font.family) text += "\\fn" + to.font.family;
    if (from.font.weight != to.font.weight)
        text += to.font.weight == 400 || to.font.weight == 700 ? (to.font.weight == 700 ? "\\b1" : "\\b0")
                                                               : "\\b" + std::to_string(to.font.weight);
    if (from.font.isItalic != to.font.isItalic) text += to.font.isItalic ? "\\i1" : "\\i0";
    if (from.isUnderlined != to.isUnderlined) text += to.isUnderlined ? "\\u1" : "\\u0";
    if (from.isStruck != to.isStruck) text += to.isStruck ? "\\s1" : "\\s0";
    text += lengthChange("fs", from.fontSize, to.fontSize);
    text += colourChange("1", from.primary, to.primary);
    if (from.isBoxed == to.isBoxed) {
        text += colourChange("3", from.outline, to.outline);
        text += lengthChange("bord", from.outlineWidth, to.outlineWidth);
    }
    text += colourChange("4", from.back, to.back);
    text += lengthChange("xshad", from.shadowX, to.shadowX);
    text += lengthChange("yshad", from.shadowY, to.shadowY);
    text += lengthChange("fsp", from.spacing, to.spacing);
    // The factor shears the other way, since there y grows downward.
    text += lengthChange("fax", from.slant, to.slant);
    return text;
}

}  // namespace qz
