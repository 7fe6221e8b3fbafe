#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"

#include <algorithm>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {
namespace {

using enum Attribute::Kind;
using Group = Attribute::Group;

// The number of layers in the editor's fixed order of fields.
constexpr uint32_t kLayersOfFirstEditor = 2;

// One paragraph of designated initialisers per attribute.
// clang-format off
const std::vector<Attribute>& attributesAboveLayers() {
    static const std::vector<Attribute> rows = {
        {.constant = "QzFontAttribute", .name = QzFontAttribute, .kind = string, .group = Group::font,
         .label = "Font", .meaning = "the font: PostScript name, full name, Family-Style or family",
         .absent = "family and style",
         .field = {"font", 1}, .inAss = "Fontname; \\fn"},
        {.constant = "QzFontNameAttribute", .name = QzFontNameAttribute, .kind = string, .group = Group::font,
         .label = "Font family", .meaning = "the family, if there is no full name", .absent = "the system's font",
         .inAss = "Fontname; \\fn"},
        {.constant = "QzFontStyleAttribute", .name = QzFontStyleAttribute, .kind = string, .group = Group::font,
         .label = "Font style", .meaning = "the style of that family", .absent = "the family's regular face",
         .inAss = "Fontname, Bold, Italic; \\fn, \\b, \\i"},
        {.constant = "QzBoldAttribute", .name = QzBoldAttribute, .kind = flag, .group = Group::font,
         .label = "Bold", .meaning = "1: the bold face of the font's family, 0: a face that is not bold",
         .absent = "the face that the font's name says", .word = "bold",
         .field = {"bold"}, .inAss = "Bold; \\b"},
        {.constant = "QzItalicAttribute", .name = QzItalicAttribute, .kind = flag, .group = Group::font,
         .label = "Italic", .meaning = "1: the italic face of the font's family, 0: the upright face",
         .absent = "the face that the font's name says", .word = "italic",
         .field = {"italic"}, .inAss = "Italic; \\i"},
        {.constant = "QzFontSizeAttribute", .name = QzFontSizeAttribute, .kind = number, .group = Group::font,
         .label = "Font size", .meaning = "points; above 0, at most 10000", .absent = "the system's font size",
         .unit = "points", .least = 0, .most = double{NSFont::kPointSizeMax},
         .tooLow = "the default size is used", .tooHigh = "10000 is used",
         .field = {"fontsize", 2, 24}, .inAss = "Fontsize; \\fs"},

        {.constant = "QzTextColorAttribute", .name = QzTextColorAttribute, .kind = color, .group = Group::letters,
         .label = "Colour", .meaning = "of the glyphs", .absent = "black",
         .field = {"fgcolor", 3}, .inAss = "PrimaryColour; \\1c, \\1a"},
        {.constant = "QzUnderlineAttribute", .name = QzUnderlineAttribute, .kind = flag, .group = Group::letters,
         .label = "Underline", .meaning = "1: a line under the text, at the font's position; layers follow it",
         .absent = "no line", .word = "underlined",
         .field = {"underline"}, .inAss = "Underline; \\u"},
        {.constant = "QzStrikeThroughAttribute", .name = QzStrikeThroughAttribute, .kind = flag,
         .group = Group::letters,
         .label = "Strike through", .meaning = "1: a line through the text, at the font's position; layers follow it",
         .absent = "no line", .word = "struck through",
         .field = {"strikethrough"}, .inAss = "StrikeOut; \\s"},
        {.constant = "NSKernAttributeName", .name = NSKernAttributeName, .kind = number, .group = Group::letters,
         .label = "Kerning", .meaning = "points added after each character; joined letters, as in Arabic, stay joined; "
                                        "disables ligatures",
         .absent = "the font's own distances", .word = "kern", .unit = "points",
         .field = {"kern", 12}, .inAss = "Spacing; \\fsp"},
        {.constant = "NSObliquenessAttributeName", .name = NSObliquenessAttributeName, .kind = number,
         .group = Group::letters,
         .label = "Slant", .meaning = "slant to the right per unit of height, in addition to that of an italic face",
         .absent = "0", .word = "slant",
         .field = {"slant", 13}, .inAss = "Italic; \\i, \\fax"},
        {.constant = "NSBaselineOffsetAttributeName", .name = NSBaselineOffsetAttributeName, .kind = number,
         .group = Group::letters,
         .label = "Baseline shift", .meaning = "points upward", .absent = "0", .word = "raised", .unit = "points",
         .field = {"baseshift", 14}, .assLoss = "raised and lowered text stays on the line"},
        {.constant = "QzLeadingAttribute", .name = QzLeadingAttribute, .kind = number, .group = Group::letters,
         .label = "Leading", .meaning = "points between lines and between paragraphs",
         .absent = "0", .word = "leading", .unit = "points",
         .field = {"leading", 15},
         .assLoss = "the leading is left out; the fonts determine the line spacing"},
    };
    return rows;
}

const std::vector<Attribute>& attributesOfPlace() {
    static const std::vector<Attribute> rows = {
        {.constant = "QzVerticalAlignmentAttribute", .name = QzVerticalAlignmentAttribute, .kind = choice,
         .group = Group::place,
         .label = "Vertical alignment", .meaning = "in the title's area: 0 top, 1 middle, 2 bottom",
         .absent = "0", .tooLow = "the text is placed at the top", .tooHigh = "the text is placed at the top",
         .choices = {"top", "middle", "bottom"}, .isOfFrame = true,
         .field = {"valign", 16}, .inAss = "Alignment; \\an"},
        {.constant = "QzHorizontalAlignmentAttribute", .name = QzHorizontalAlignmentAttribute, .kind = choice,
         .group = Group::place,
         .label = "Horizontal alignment", .meaning = "0 left, 1 right, 2 centred, 3 justified, 4 natural",
         .absent = "4", .tooLow = "it is ignored", .tooHigh = "it is ignored",
         .choices = {"left", "right", "centred", "justified", "natural"},
         .field = {"halign", 11}, .inAss = "Alignment; \\an"},
        {.constant = "QzBoundingMarginsAttribute", .name = QzBoundingMarginsAttribute, .kind = margins,
         .group = Group::place,
         .label = "Margins", .meaning = "points between the text and the screen's edges: left, right, top, bottom",
         .absent = "the bounding box", .word = "margins", .unit = "points", .isOfFrame = true,
         .field = {"boundingmargins"}, .inAss = "MarginL, MarginR, MarginV"},
        {.constant = "QzBoundingBoxAttribute", .name = QzBoundingBoxAttribute, .kind = rectangle,
         .group = Group::place,
         .label = "Bounding box",
         .meaning = "{{x, y}, {width, height}} in fractions of the screen; margins take precedence",
         .absent = "the whole screen", .word = "area", .unit = "of the screen", .isOfFrame = true,
         .field = {"margins", 10}, .inAss = "MarginL, MarginR, MarginV"},
        {.constant = "QzTextBoundingBoxAppearanceAttribute", .name = QzTextBoundingBoxAppearanceAttribute,
         .kind = box, .group = Group::place,
         .label = "Box", .meaning = "drawn around the text, beneath the layers", .absent = "no box", .isOfFrame = true,
         .field = {"tbox", 17}, .inAss = "BorderStyle, OutlineColour"},
    };
    return rows;
}

/// `number` counts from 1.
std::vector<Attribute> attributesOfLayer(const LayerAttributes& names, uint32_t number) {
    const std::string infix = number == 1 ? "" : std::to_string(number);
    const std::string ofLayer = " of layer " + std::to_string(number);
    const auto place = [number](uint32_t ofField) {
        return number <= kLayersOfFirstEditor ? static_cast<int>(3 * number + ofField) : 0;
    };
    return {
        {.constant = "QzBackground" + infix + "ColorAttribute", .name = names.color, .kind = color,
         .group = Group::layer,
         .label = "Colour", .meaning = ofLayer.substr(1), .absent = "the layer is not drawn", .layer = number,
         .field = {"shadowcolor", place(3)}, .inAss = "OutlineColour, BackColour; \\3c, \\3a, \\4c, \\4a"},
        {.constant = "QzBackground" + infix + "WidthAttribute", .name = names.width, .kind = Attribute::Kind::number,
         .group = Group::layer,
         .label = "Width", .meaning = "points" + ofLayer + "; 0 is a plain copy", .absent = "0",
         .unit = "points", .least = 0, .tooLow = "the layer is not drawn", .layer = number,
         .field = {"shadowwidth", place(1)}, .inAss = "Outline; \\bord"},
        {.constant = "QzBackground" + infix + "OffsetAttribute", .name = names.offset, .kind = point,
         .group = Group::layer,
         .label = "Offset", .meaning = "{x, y}" + ofLayer + ": points to the right and downward", .absent = "{0, 0}",
         .unit = "points", .layer = number,
         .field = {"shadowoffset", place(2)}, .inAss = "Shadow; \\xshad, \\yshad"},
    };
}
// clang-format on

std::vector<Attribute> madeVocabulary() {
    std::vector<Attribute> all = attributesAboveLayers();
    uint32_t number = 0;
    for (const LayerAttributes& names : layerAttributes()) {
        for (Attribute& attribute : attributesOfLayer(names, ++number)) all.push_back(std::move(attribute));
    }
    for (const Attribute& attribute : attributesOfPlace()) all.push_back(attribute);
    for (Attribute& attribute : all) {
        if (attribute.kind != choice) continue;
        attribute.least = 0;
        attribute.most = static_cast<double>(attribute.choices.size()) - 1;
    }
    return all;
}

}  // namespace

const std::vector<LayerAttributes>& layerAttributes() {
    static const std::vector<LayerAttributes> layers = {
        {QzBackgroundColorAttribute, QzBackgroundOffsetAttribute, QzBackgroundWidthAttribute},
        {QzBackground2ColorAttribute, QzBackground2OffsetAttribute, QzBackground2WidthAttribute},
    };
    return layers;
}

const std::vector<Attribute>& attributeVocabulary() {
    static const std::vector<Attribute> all = madeVocabulary();
    return all;
}

const Attribute* attributeNamed(const NSObject& name) {
    const auto& all = attributeVocabulary();
    const auto found = std::ranges::find_if(all, [&](const Attribute& each) { return each.name->isEqual(name); });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace qz
