#include "apps/qzanno/PaletteText.h"

#include <cstdio>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "platform/graphics/StraightColor.h"

namespace qz::tool {
namespace {

/// Joins the parts that say something.
class Parts {
public:
    explicit Parts(const char* separator) : separator_(separator) {}
    void add(const std::string& part) {
        if (part.empty()) return;
        if (!text_.empty()) text_ += separator_;
        text_ += part;
    }
    const std::string& text() const { return text_; }

private:
    const char* separator_;
    std::string text_;
};

std::string colorText(const NSColor& color) {
    if (const Ref<NSString> name = color.colorNameComponent()) return name->utf8();
    const auto [red, green, blue, alpha] = straightColorOf(color);
    char text[16];
    const int length = std::snprintf(text, sizeof text, "#%02x%02x%02x", red, green, blue);
    if (alpha < 255) std::snprintf(text + length, sizeof text - length, "%02x", alpha);
    return text;
}

std::string labelled(const char* label, const Ref<NSObject>& value) {
    return value ? std::string(label) + " " + value->description() : std::string();
}

/// The word of a flag, with a "not" where it is off; empty where it is not set.
std::string flagText(const char* word, const NSDictionary& attributes, const NSString& name) {
    const auto flag = numberFrom(attributes.objectForKey(name));
    return !flag ? std::string() : flag->boolValue() ? word : std::string("not ") + word;
}

std::string layerText(const char* label, const NSDictionary& attributes, const NSString& width, const NSString& offset,
                      const NSString& color) {
    const auto value = attributes.objectForKey<NSColor>(color);
    if (!value) return {};
    if (value->alphaComponent() == 0) return std::string("no ") + label;
    Parts parts(" ");
    parts.add(label);
    if (const Ref<NSObject> points = attributes.objectForKey(width)) parts.add(points->description());
    if (const Ref<NSObject> place = attributes.objectForKey(offset)) parts.add(place->description());
    parts.add(colorText(*value));
    return parts.text();
}

/// The word of an enumeration value; the number itself outside the enumeration.
template <size_t N>
std::string wordFor(const Ref<NSObject>& value, const char* const (&words)[N]) {
    const auto number = numberFrom(value);
    if (!number) return {};
    const int32_t index = number->intValue();
    return index >= 0 && index < static_cast<int32_t>(N) ? words[index] : number->description();
}

std::string marginsText(const NSDictionary& attributes) {
    const auto margins = attributes.objectForKey<NSArray>(*QzBoundingMarginsAttribute);
    if (!margins) return {};
    Parts parts(" ");
    parts.add("margins");
    for (const Ref<NSObject>& margin : margins->elements()) parts.add(margin->description());
    return parts.text();
}

std::string boxText(const NSDictionary& attributes) {
    const auto box = attributes.objectForKey<QzBBoxInfo>(*QzTextBoundingBoxAppearanceAttribute);
    if (!box) return {};
    if (box->type() <= 0) return "no box";
    return (box->type() == 1 ? "outlined box " : "filled box ") + colorText(*box->color());
}

}  // namespace

std::string fontText(const NSDictionary& attributes) {
    Parts parts(" ");
    Ref<NSString> name = attributes.objectForKey<NSString>(*QzFontAttribute);
    if (!name) {
        const auto family = attributes.objectForKey<NSString>(*QzFontNameAttribute);
        const auto style = attributes.objectForKey<NSString>(*QzFontStyleAttribute);
        if (family)
            name = fontnameWithName(family, style);
        else if (style)
            parts.add("style " + style->utf8());
    }
    if (name) {
        parts.add(name->utf8());
        if (!NSFont::fontWithName(*name, 0)) parts.add("(missing)");
    }
    parts.add(flagText("bold", attributes, *QzBoldAttribute));
    parts.add(flagText("italic", attributes, *QzItalicAttribute));
    if (const Ref<NSObject> size = attributes.objectForKey(*QzFontSizeAttribute)) parts.add(size->description());
    return parts.text();
}

std::string styleText(const NSDictionary& attributes) {
    Parts parts("; ");
    if (const auto color = attributes.objectForKey<NSColor>(*QzTextColorAttribute)) parts.add(colorText(*color));
    parts.add(flagText("underlined", attributes, *QzUnderlineAttribute));
    parts.add(flagText("struck through", attributes, *QzStrikeThroughAttribute));
    parts.add(labelled("kern", attributes.objectForKey(*NSKernAttributeName)));
    parts.add(labelled("slant", attributes.objectForKey(*NSObliquenessAttributeName)));
    parts.add(labelled("raised", attributes.objectForKey(*NSBaselineOffsetAttributeName)));
    parts.add(labelled("leading", attributes.objectForKey(*QzLeadingAttribute)));
    parts.add(layerText("layer 1", attributes, *QzBackgroundWidthAttribute, *QzBackgroundOffsetAttribute,
                        *QzBackgroundColorAttribute));
    parts.add(layerText("layer 2", attributes, *QzBackground2WidthAttribute, *QzBackground2OffsetAttribute,
                        *QzBackground2ColorAttribute));
    return parts.text();
}

std::string frameText(const NSDictionary& attributes) {
    static constexpr const char* horizontal[] = {"left", "right", "centred", "justified", "natural"};
    static constexpr const char* vertical[] = {"top", "middle", "bottom"};
    Parts parts("; ");
    parts.add(wordFor(attributes.objectForKey(*QzVerticalAlignmentAttribute), vertical));
    parts.add(wordFor(attributes.objectForKey(*QzHorizontalAlignmentAttribute), horizontal));
    parts.add(marginsText(attributes));
    parts.add(labelled("area", attributes.objectForKey(*QzBoundingBoxAttribute)));
    parts.add(boxText(attributes));
    return parts.text();
}

}  // namespace qz::tool
