#include "captions/AssFonts.h"

#include <cmath>

#include <hb-ot.h>

#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "platform/text/FontFace.h"

namespace qz {
namespace {

/// The weight of OS/2 tables and styles for one of Fontconfig's scale (FC_WEIGHT_…).
int weightOf(double fontconfigWeight) {
    constexpr struct {
        double fontconfig;
        int weight;
    } kWeights[] = {{40, 200},  {50, 300},  {55, 350},  {75, 380}, {80, 400},
                    {100, 500}, {180, 600}, {200, 700}, {205, 800}};
    for (const auto& [fontconfig, weight] : kWeights) {
        if (fontconfigWeight <= fontconfig) return weight;
    }
    return 900;
}

}  // namespace

AssFont assFontOf(const NSFont& font) {
    const InstalledFont& installed = font.face().installedFont();
    AssFont found = {installed.familyName, weightOf(installed.weight), installed.slant > 0};
    // Players synthesise missing faces, as we do.
    const FontTraits unmet = font.unmetTraits();
    if (unmet.bold) found.weight = *unmet.bold ? 700 : 400;
    if (unmet.italic) found.isItalic = *unmet.italic;
    return found;
}

Ref<NSString> fontNameOf(const AssFont& font, const NSFont::Library& library) {
    const bool isBold = font.weight >= 600;
    const auto family = NSString::stringWithUTF8String(font.family);
    Ref<NSString> name;
    for (const char* style : {isBold          ? (font.isItalic ? "Bold Italic" : "Bold")
                              : font.isItalic ? "Italic"
                                              : "",
                              isBold          ? (font.isItalic ? "Bold Oblique" : "Bold")
                              : font.isItalic ? "Oblique"
                                              : ""}) {
        const Ref<NSString> each = fontnameWithName(family, NSString::stringWithUTF8String(style));
        if (NSFont::fontWithName(*each, 0, library)) return each;
        if (!name) name = each;
    }
    return name;
}

double assLineHeightOf(const NSFont& font) {
    hb_position_t ascent = 0;
    hb_position_t descent = 0;
    hb_font_t* const shaper = font.face().shaper();
    const bool hasBoth = shaper &&
                         hb_ot_metrics_get_position(shaper, HB_OT_METRICS_TAG_HORIZONTAL_CLIPPING_ASCENT, &ascent) &&
                         hb_ot_metrics_get_position(shaper, HB_OT_METRICS_TAG_HORIZONTAL_CLIPPING_DESCENT, &descent);
    const FontFace::Metrics& metrics = font.face().metrics();
    // The table stores the descent as a positive length.
    const double height = hasBoth && ascent + std::abs(descent) > 0 ? double(ascent) + std::abs(descent)
                                                                    : metrics.ascender - metrics.descender;
    return height > 0 ? height / font.face().unitsPerEm() : 1;
}

}  // namespace qz
