#include "apps/qzanno/PaletteText.h"

#include <cstdio>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "platform/graphics/StraightColor.h"

namespace qz::tool {
namespace {

/// Joins the parts that are not empty.
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

/// Describes the layer whose colour the attribute is.
std::string layerText(const Attribute& attribute, const NSDictionary& attributes) {
    const std::string label = "layer " + std::to_string(attribute.layer);
    const auto color = attributes.objectForKey<NSColor>(*attribute.name);
    if (!color) return {};
    if (color->alphaComponent() == 0) return "no " + label;
    const LayerAttributes& names = layerAttributes().at(attribute.layer - 1);
    Parts parts(" ");
    parts.add(label);
    for (const Ref<NSString>& name : {names.width, names.offset}) {
        if (const Ref<NSObject> value = attributes.objectForKey(*name)) parts.add(value->description());
    }
    parts.add(colorText(*color));
    return parts.text();
}

std::string boxText(const QzBBoxInfo& box) {
    if (box.type() <= 0) return "no box";
    return (box.type() == 1 ? "outlined box " : "filled box ") + colorText(*box.color());
}

std::string choiceText(const Attribute& attribute, const NSNumber& number) {
    const auto index = static_cast<size_t>(number.intValue());  // a negative number becomes too large
    return index < attribute.choices.size() ? attribute.choices[index] : number.description();
}

/// Empty for a value of the wrong kind.
std::string valueText(const Attribute& attribute, const Ref<NSObject>& value) {
    using Kind = Attribute::Kind;
    const auto number = numberFrom(value);
    switch (attribute.kind) {
        case Kind::flag:
            return number ? (number->boolValue() ? "" : "not ") + std::string(attribute.word) : "";
        case Kind::choice:
            return number ? choiceText(attribute, *number) : "";
        case Kind::color: {
            const auto color = std::dynamic_pointer_cast<NSColor>(value);
            return color ? colorText(*color) : "";
        }
        case Kind::box: {
            const auto box = std::dynamic_pointer_cast<QzBBoxInfo>(value);
            return box ? boxText(*box) : "";
        }
        case Kind::margins: {
            Parts parts(" ");
            if (const auto array = std::dynamic_pointer_cast<NSArray>(value)) {
                parts.add(attribute.word);
                for (const Ref<NSObject>& margin : array->elements()) parts.add(margin->description());
            }
            return parts.text();
        }
        default: {
            Parts parts(" ");
            parts.add(attribute.word);
            parts.add(value->description());
            return parts.text();
        }
    }
}

std::string textOf(Attribute::Group group, const NSDictionary& attributes, const char* separator) {
    Parts parts(separator);
    for (const Attribute& attribute : attributeVocabulary()) {
        if (attribute.group != group) continue;
        if (attribute.layer > 0) {
            if (attribute.kind == Attribute::Kind::color) parts.add(layerText(attribute, attributes));
        } else if (attribute.kind != Attribute::Kind::string) {
            if (const Ref<NSObject> value = attributes.objectForKey(*attribute.name))
                parts.add(valueText(attribute, value));
        }
    }
    return parts.text();
}

/// The font named by strings.
std::string fontNameText(const NSDictionary& attributes, const NSFont::Library& library) {
    const Ref<NSString> name = fontNameAskedFor(attributes);
    if (name) return name->utf8() + (NSFont::fontWithName(*name, 0, library) ? "" : " (missing)");
    const auto style = attributes.objectForKey<NSString>(*QzFontStyleAttribute);
    return style ? "style " + style->utf8() : "";
}

}  // namespace

std::string fontText(const NSDictionary& attributes, const NSFont::Library& library) {
    Parts parts(" ");
    parts.add(fontNameText(attributes, library));
    parts.add(textOf(Attribute::Group::font, attributes, " "));
    return parts.text();
}

std::string styleText(const NSDictionary& attributes) {
    Parts parts("; ");
    parts.add(textOf(Attribute::Group::letters, attributes, "; "));
    parts.add(textOf(Attribute::Group::layer, attributes, "; "));
    return parts.text();
}

std::string frameText(const NSDictionary& attributes) {
    return textOf(Attribute::Group::place, attributes, "; ");
}

}  // namespace qz::tool
