#include "QzAnno_AnnotatedTextFramework/ui/EditorFields.h"

#include <set>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {
namespace {

constexpr float kDefaultFontSize = 24.0f;

}  // namespace

EditorFieldKind kindOfEditorField(const std::string& name) {
    static const std::set<std::string> texts = {"font", "annoname"};
    static const std::set<std::string> codes = {"halign", "valign", "tboxtype"};
    static const std::set<std::string> colors = {"fgcolor", "shadowcolor", "shadowcolor2", "tboxcolor"};
    static const std::set<std::string> choices = {"bold", "italic", "underline", "strikethrough"};
    if (name.starts_with("en_")) return EditorFieldKind::flag;
    if (choices.contains(name)) return EditorFieldKind::choice;
    if (texts.contains(name)) return EditorFieldKind::text;
    if (codes.contains(name)) return EditorFieldKind::code;
    return colors.contains(name) ? EditorFieldKind::color : EditorFieldKind::real;
}

Ref<NSObject> defaultOfEditorField(const std::string& name) {
    switch (kindOfEditorField(name)) {
        case EditorFieldKind::flag:
            return NSNumber::numberWithBool(false);
        case EditorFieldKind::text:
            return name == "annoname" ? "-"_ns : NSFont::systemFontOfSize(kDefaultFontSize)->fontName();
        case EditorFieldKind::code:
            return NSNumber::numberWithInt(0);
        case EditorFieldKind::color:
            return NSColor::blackColor();
        case EditorFieldKind::choice:
            // Whoever switches the attribute on means it.
            return NSNumber::numberWithBool(true);
        case EditorFieldKind::real:
            break;
    }
    return NSNumber::numberWithFloat(name == "fontsize" ? kDefaultFontSize : 0.0f);
}

Ref<NSObject> valueForEditorField(const std::string& name, const Ref<NSObject>& value) {
    const EditorFieldKind kind = kindOfEditorField(name);
    if (kind == EditorFieldKind::text && std::dynamic_pointer_cast<NSString>(value)) return value;
    if (kind == EditorFieldKind::color && std::dynamic_pointer_cast<NSColor>(value)) return value;
    const auto number = numberFrom(value);
    if (!number || kind == EditorFieldKind::text || kind == EditorFieldKind::color) return defaultOfEditorField(name);
    if (kind == EditorFieldKind::flag || kind == EditorFieldKind::choice)
        return NSNumber::numberWithBool(number->boolValue());
    if (kind == EditorFieldKind::code) return NSNumber::numberWithInt(number->intValue());
    // Margins are numbers of double precision, everything else of single precision.
    return name.find("margins") != std::string::npos ? NSNumber::numberWithDouble(number->doubleValue())
                                                     : NSNumber::numberWithFloat(number->floatValue());
}

const std::vector<PlainEditorField>& plainEditorFields() {
    static const std::vector<PlainEditorField> fields = {
        {"en_fontsize", "fontsize", QzFontSizeAttribute},
        {"en_fgcolor", "fgcolor", QzTextColorAttribute},
        {"en_shadowwidth", "shadowwidth", QzBackgroundWidthAttribute},
        {"en_shadowcolor", "shadowcolor", QzBackgroundColorAttribute},
        {"en_shadowwidth2", "shadowwidth2", QzBackground2WidthAttribute},
        {"en_shadowcolor2", "shadowcolor2", QzBackground2ColorAttribute},
        {"en_halign", "halign", QzHorizontalAlignmentAttribute},
        {"en_kern", "kern", NSKernAttributeName},
        {"en_slant", "slant", NSObliquenessAttributeName},
        {"en_baseshift", "baseshift", NSBaselineOffsetAttributeName},
        {"en_leading", "leading", QzLeadingAttribute},
        {"en_valign", "valign", QzVerticalAlignmentAttribute},
        {"en_bold", "bold", QzBoldAttribute},
        {"en_italic", "italic", QzItalicAttribute},
        {"en_underline", "underline", QzUnderlineAttribute},
        {"en_strikethrough", "strikethrough", QzStrikeThroughAttribute},
    };
    return fields;
}

const std::vector<PointEditorField>& pointEditorFields() {
    static const std::vector<PointEditorField> fields = {
        {"en_shadowoffset", "shadowoffset_x", "shadowoffset_y", QzBackgroundOffsetAttribute},
        {"en_shadowoffset2", "shadowoffset_x2", "shadowoffset_y2", QzBackground2OffsetAttribute},
    };
    return fields;
}

}  // namespace qz
