#include "captions/AssLook.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <ranges>

#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "platform/graphics/StraightColor.h"

namespace qz {
namespace {

CaptionColour assColourOf(const NSColor& color) {
    const auto [red, green, blue, alpha] = straightColorOf(color);
    return {red, green, blue, alpha};
}

/// Palettes may hold any number; drawn lengths are never larger.
double bounded(double length) {
    constexpr double kMost = 1e6;
    return std::isfinite(length) ? std::clamp(length, -kMost, kMost) : 0;
}

bool isCentred(const Layer& layer) {
    return std::abs(layer.offset.x) < 0.5f && std::abs(layer.offset.y) < 0.5f;
}

/// The width on each side of the letters.
double sideWidth(const Layer& layer) {
    return std::max(0.0, bounded(layer.width) / 2);
}

/// A style has one outline, around the letters, and one shadow, beneath everything.
void readLayers(const std::vector<Layer>& layers, const TextBox& box, AssLook& look, std::set<std::string>& losses) {
    std::vector<Layer> shown;
    std::ranges::copy_if(layers, std::back_inserter(shown), &Layer::isVisible);
    if (box.form == TextBox::Form::outlined) losses.insert("outlined boxes are left out; a style has only filled ones");
    if (box.form == TextBox::Form::filled && box.isVisible()) {
        look.isBoxed = true;
        look.outline = assColourOf(*box.color);
        look.outlineWidth = kLinePaddingOfAss;
        losses.insert("boxes are drawn line by line, not around the whole text");
        if (!shown.empty()) losses.insert("letters in a filled box lose their outline and shadow; a style has either");
        return;
    }
    if (!shown.empty() && isCentred(shown.front())) {
        look.outline = assColourOf(*shown.front().color);
        look.outlineWidth = sideWidth(shown.front());
        shown.erase(shown.begin());
    }
    const auto shadow = std::ranges::find_if_not(std::views::reverse(shown), isCentred);
    if (shadow != shown.rend()) {
        look.back = assColourOf(*shadow->color);
        look.shadowX = bounded(shadow->offset.x);
        look.shadowY = bounded(shadow->offset.y);
        if (std::abs(sideWidth(*shadow) - look.outlineWidth) > 0.5)
            losses.insert("shadows are as wide as the outline, whatever width the palette gives them");
        shown.erase(std::next(shadow).base());
    }
    if (!shown.empty()) losses.insert("a second outline, or a second shadow, is left out; a style has one of each");
}

void readPlace(const FrameStyle& frame, NSSize screen, AssLook& look, std::set<std::string>& losses) {
    using enum NSTextAlignment;
    const NSTextAlignment alignment = frame.horizontal.value_or(natural);
    const int column = alignment == center ? 2 : alignment == right ? 3 : 1;
    if (alignment == justified) losses.insert("justified text is left-aligned");
    // Number-pad rows count from the bottom.
    look.alignment = column + 3 * (2 - static_cast<int>(frame.vertical));
    const Margins margins = frame.marginsOn(screen);
    const auto kept = [](double margin) { return std::max(0.0, bounded(margin)); };
    look.marginLeft = kept(margins.left) + kLinePaddingOfAss;
    look.marginRight = kept(margins.right) + kLinePaddingOfAss;
    look.marginTop = kept(margins.top);
    look.marginBottom = kept(margins.bottom);
}

void readSlant(double slant, AssLook& look, std::set<std::string>& losses) {
    if (slant > 0 && !look.font.isItalic) {
        // A shear on part of a line would move its first letter over the blank before it.
        look.font.isItalic = true;
        losses.insert("slanted text is written as italic, at the player's angle");
    }
    look.slant = std::max(0.0, -bounded(slant));
}

/// Reports attributes that a style cannot hold.
void tellLosses(const NSDictionary& attributes, std::set<std::string>& losses) {
    for (const Attribute& attribute : attributeVocabulary()) {
        if (*attribute.inAss || !isOn(attributes, *attribute.name)) continue;
        losses.insert(*attribute.assLoss ? attribute.assLoss
                                         : attribute.label + " is left out; a style cannot hold it");
    }
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
    const TitleStyle style = titleStyleOf(attributes);
    const FrameStyle frame = frameStyleOf(attributes);
    AssLook look;
    if (style.font) {
        look.font = assFontOf(*style.font);
        look.fontSize = double{style.font->pointSize()} * assLineHeightOf(*style.font);
    }
    look.primary = assColourOf(*style.color);
    look.spacing = bounded(style.kern);
    look.isUnderlined = style.isUnderlined;
    look.isStruck = style.isStruckThrough;
    readSlant(style.slant, look, losses);
    readLayers(style.layers, frame.box, look, losses);
    readPlace(frame, screen, look, losses);
    tellLosses(attributes, losses);
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
    // Players read margins as whole numbers.
    for (const double margin : {style.marginLeft, style.marginRight, style.marginVertical})
        text += "," + std::to_string(std::lround(margin));
    // Players then determine the direction of each line.
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
    // The factor has the opposite sign, since y grows downward there.
    text += lengthChange("fax", from.slant, to.slant);
    return text;
}

}  // namespace qz
