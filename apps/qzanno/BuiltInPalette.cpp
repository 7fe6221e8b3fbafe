#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "apps/qzanno/PaletteFile.h"

namespace qz::tool {
namespace {

// In points on a screen of 1920 x 1080, with the text inside the title-safe area.
constexpr float kFontSize = 60;
constexpr Margins kMargins = {96, 96, 54, 54};

Ref<NSNumber> number(float value) {
    return NSNumber::numberWithFloat(value);
}

void giveGlobalLooks(QzMutableAnno& anno) {
    anno.setAttribute(QzFontAttribute, "DejaVu Sans-Bold"_ns);
    anno.setAttribute(QzFontSizeAttribute, number(kFontSize));
    anno.setAttribute(QzTextColorAttribute, NSColor::whiteColor());
    anno.setAttribute(QzHorizontalAlignmentAttribute,
                      NSNumber::numberWithInt(static_cast<int32_t>(NSTextAlignment::center)));
    anno.setAttribute(QzVerticalAlignmentAttribute, NSNumber::numberWithInt(2));
    anno.setAttribute(QzBoundingMarginsAttribute, kMargins.stored());
    anno.setAttribute(QzBackgroundColorAttribute, NSColor::blackColor());
    anno.setAttribute(QzBackgroundWidthAttribute, number(8));
    anno.setAttribute(QzBackground2ColorAttribute, NSColor::colorWithCalibratedRed(0, 0, 0, 0.5f));
    anno.setAttribute(QzBackground2WidthAttribute, number(8));
    anno.setAttribute(QzBackground2OffsetAttribute, "{4, 5}"_ns);
}

void add(QzAnnoPalette& palette, const Ref<NSString>& name, const Ref<NSString>& attribute,
         const Ref<NSObject>& value) {
    const Ref<QzMutableAnno> anno = palette.createAnno(name)->mutableCopy();
    anno->setAttribute(attribute, value);
    palette.replaceAnno(anno);
}

}  // namespace

Ref<QzAnnoPalette> builtInPalette() {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    const Ref<QzMutableAnno> global = palette->lookupAnno({})->mutableCopy();
    giveGlobalLooks(*global);
    palette->replaceAnno(global);
    add(*palette, "Top"_ns, QzVerticalAlignmentAttribute, NSNumber::numberWithInt(0));
    add(*palette, "Centre"_ns, QzVerticalAlignmentAttribute, NSNumber::numberWithInt(1));
    add(*palette, "v"_ns, QzTextColorAttribute, NSColor::colorWithCalibratedRed(1, 0.85f, 0.2f, 1));
    add(*palette, "i"_ns, NSObliquenessAttributeName, number(0.2f));
    return palette;
}

}  // namespace qz::tool
