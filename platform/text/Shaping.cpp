#include "platform/text/Shaping.h"

#include <algorithm>
#include <array>
#include <new>

#include <hb.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/text/FontFace.h"
#include "platform/text/TextCoverage.h"

namespace qz {
namespace {

constexpr uint32_t kZeroWidthSpace = 0x200B;
constexpr std::string_view kNoLanguage = "und";

constexpr std::array kOptionalLigatures = {HB_TAG('l', 'i', 'g', 'a'), HB_TAG('c', 'l', 'i', 'g')};

// Features count positions from the start of the buffer's text.
std::vector<hb_feature_t> featuresOf(const ShapingItem& item, uint32_t firstPosition) {
    std::vector<hb_feature_t> features;
    for (const hb_tag_t tag : kOptionalLigatures) {
        if (!item.allowsLigatures) features.push_back({tag, 0, HB_FEATURE_GLOBAL_START, HB_FEATURE_GLOBAL_END});
        for (const Range& range : item.withoutLigatures) {
            features.push_back({tag, 0, range.location - firstPosition, range.location - firstPosition + range.length});
        }
    }
    return features;
}

hb_buffer_t* bufferOfThread() {
    thread_local const HarfBuzzRef<hb_buffer_t> buffer(hb_buffer_create());
    if (!hb_buffer_allocation_successful(buffer.get())) hb_buffer_reset(buffer.get());
    return buffer.get();
}

// Fills the buffer with the item and some context; returns the position in the text where the buffer begins.
uint32_t fill(hb_buffer_t* buffer, const ShapingItem& item) {
    const size_t contextStart = item.range.location - std::min<size_t>(item.range.location, kShapingContextUnits);
    const std::u16string_view context =
        item.text.substr(contextStart, item.range.end() + kShapingContextUnits - contextStart);

    hb_buffer_clear_contents(buffer);
    hb_buffer_add_utf16(buffer, reinterpret_cast<const uint16_t*>(context.data()), static_cast<int>(context.size()),
                        static_cast<unsigned int>(item.range.location - contextStart),
                        static_cast<int>(item.range.length));
    // A control may have a glyph, or show as missing; default-ignorable characters do neither.
    unsigned int length = 0;
    hb_glyph_info_t* const characters = hb_buffer_get_glyph_infos(buffer, &length);
    for (unsigned int i = 0; i < length; ++i) {
        if (isLayoutControl(characters[i].codepoint)) characters[i].codepoint = kZeroWidthSpace;
    }
    return static_cast<uint32_t>(contextStart);
}

void setProperties(hb_buffer_t* buffer, const ShapingItem& item) {
    hb_buffer_set_direction(buffer, item.isRightToLeft ? HB_DIRECTION_RTL : HB_DIRECTION_LTR);
    if (item.script != 0) hb_buffer_set_script(buffer, hb_script_from_iso15924_tag(item.script));
    const std::string_view language = item.language.empty() ? kNoLanguage : std::string_view(item.language);
    hb_buffer_set_language(buffer, hb_language_from_string(language.data(), static_cast<int>(language.size())));
    unsigned int flags = HB_BUFFER_FLAG_DEFAULT;
    if (item.range.location == 0) flags |= HB_BUFFER_FLAG_BOT;
    if (item.range.end() == item.text.size()) flags |= HB_BUFFER_FLAG_EOT;
    hb_buffer_set_flags(buffer, static_cast<hb_buffer_flags_t>(flags));
    hb_buffer_guess_segment_properties(buffer);
}

}  // namespace

std::vector<ShapedGlyph> shape(const ShapingItem& item) {
    if (item.range.length > kShapingUnitsMax || item.range.end() > item.text.size() || !item.font) {
        reportFailedAssertion("Shaping.cpp", __LINE__,
                              "an item has a font, lies in its text and is at most kShapingUnitsMax long");
        return {};
    }
    const FontFace& face = item.font->face();
    hb_buffer_t* const buffer = bufferOfThread();
    const uint32_t firstPosition = fill(buffer, item);
    setProperties(buffer, item);
    const std::vector<hb_feature_t> features = featuresOf(item, firstPosition);
    const auto featureCount = static_cast<unsigned int>(features.size());
    const bool isShaped = hb_shape_full(face.shaper(), buffer, features.data(), featureCount, nullptr);
    if (!isShaped || !hb_buffer_allocation_successful(buffer)) throw std::bad_alloc();
    // HarfBuzz returns visual order, from the left.
    if (item.isRightToLeft) hb_buffer_reverse_clusters(buffer);

    unsigned int count = 0;
    hb_glyph_info_t* const infos = hb_buffer_get_glyph_infos(buffer, &count);
    const hb_glyph_position_t* const positions = hb_buffer_get_glyph_positions(buffer, &count);
    const double scale = item.font->pointSize() / face.unitsPerEm();
    std::vector<ShapedGlyph> glyphs(count);
    for (unsigned int i = 0; i < count; ++i) {
        glyphs[i].glyph = infos[i].codepoint;
        glyphs[i].cluster = firstPosition + infos[i].cluster;
        glyphs[i].advance = static_cast<float>(scale * positions[i].x_advance);
        glyphs[i].offsetX = static_cast<float>(scale * positions[i].x_offset);
        glyphs[i].offsetY = static_cast<float>(scale * positions[i].y_offset);
        glyphs[i].isUnsafeToBreak = (hb_glyph_info_get_glyph_flags(&infos[i]) & HB_GLYPH_FLAG_UNSAFE_TO_BREAK) != 0;
    }
    return glyphs;
}

}  // namespace qz
