#include "platform/text/Paragraph.h"

#include <algorithm>
#include <cmath>

#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "platform/text/FontFixing.h"

namespace qz {
namespace {

constexpr char16_t kSoftHyphen = 0x00AD;
// Once this long, items end at the next break opportunity, and in any case at the maximum length: a line copies, and
// sometimes reshapes, the rest of its first item, which should not be much longer than a line.
constexpr uint32_t kItemUnits = 256;
constexpr uint32_t kItemUnitsMax = 1024;
static_assert(kItemUnitsMax + TextBreaker::kClusterUnitsMax <= kShapingUnitsMax);
using Limits::kLengthMax;

float lengthAttribute(const NSDictionary& attributes, const NSString& name) {
    const Ref<NSNumber> number = numberFrom(attributes.objectForKey(name));
    const float length = number ? number->floatValue() : 0;
    return std::isfinite(length) ? std::clamp(length, -kLengthMax, kLengthMax) : 0;
}

float lengthOrNone(float length) {
    return std::isfinite(length) ? std::clamp(length, 0.0f, kLengthMax) : 0;
}

std::vector<NSTextTab> usableTabs(std::vector<NSTextTab> tabs) {
    std::erase_if(tabs, [](const NSTextTab& tab) { return !(tab.location > 0 && tab.location <= kLengthMax); });
    std::ranges::stable_sort(tabs, {}, &NSTextTab::location);
    return tabs;
}

NSParagraphStyle::Values paragraphStyle(const NSDictionary& attributes) {
    const Ref<NSParagraphStyle> style = attributes.objectForKey<NSParagraphStyle>(*NSParagraphStyleAttributeName);
    NSParagraphStyle::Values values = style ? style->values() : NSParagraphStyle::Values();
    for (float* length : {&values.lineSpacing, &values.paragraphSpacing, &values.paragraphSpacingBefore,
                          &values.minimumLineHeight, &values.maximumLineHeight, &values.lineHeightMultiple,
                          &values.firstLineHeadIndent, &values.headIndent, &values.defaultTabInterval}) {
        *length = lengthOrNone(*length);
    }
    values.tailIndent = std::isfinite(values.tailIndent) ? std::clamp(values.tailIndent, -kLengthMax, kLengthMax) : 0;
    values.tabStops = usableTabs(std::move(values.tabStops));
    return values;
}

/// Line and paragraph separators, tabs, and controls without glyphs.
bool isControl(char16_t unit) {
    return u_charType(unit) == U_CONTROL_CHAR || unit == 0x2028 || unit == 0x2029;
}

/// The script of a cluster: that of its first character with a specific script.
UScriptCode clusterScript(std::u16string_view cluster) {
    for (size_t i = 0; i < cluster.size();) {
        UChar32 character;
        U16_NEXT(cluster.data(), i, cluster.size(), character);
        UErrorCode status = U_ZERO_ERROR;
        const UScriptCode script = uscript_getScript(character, &status);
        if (U_SUCCESS(status) && script > USCRIPT_INHERITED && script != USCRIPT_UNKNOWN) return script;
    }
    return USCRIPT_COMMON;
}

uint32_t scriptTag(UScriptCode script) {
    const char* name = script == USCRIPT_COMMON ? nullptr : uscript_getShortName(script);
    if (!name) return 0;
    uint32_t tag = 0;
    for (int i = 0; i < 4; ++i) tag = tag << 8 | static_cast<uint8_t>(name[i]);
    return tag;
}

std::vector<ShapedGlyph> controlGlyphs(const std::vector<uint8_t>& breaks, Range range) {
    std::vector<ShapedGlyph> glyphs;
    for (uint32_t i = range.location; i < range.end(); ++i) {
        if (i == range.location || breaks[i] & TextBreak::clusterStart) {
            glyphs.push_back({.glyph = NSControlGlyph, .cluster = i});
        }
    }
    return glyphs;
}

}  // namespace

void Paragraph::analyse(const NSAttributedString& text, uint32_t location, ShapingCache& shapingCache) {
    if (isAnalysed_) return;
    isAnalysed_ = true;
    shapingCache_ = &shapingCache;
    const std::u16string_view paragraph = std::u16string_view(text.characters()).substr(location, length_);
    if (length_ > 0) style_ = paragraphStyle(*text.attributesAtIndex(location));
    breaks_ = TextBreaker::breaksInParagraph(paragraph);
    findStyles(text, location);
    itemize(paragraph);
}

void Paragraph::findStyles(const NSAttributedString& text, uint32_t location) {
    Ref<NSDictionary> before;
    for (uint32_t position = 0; position < length_;) {
        Range range;
        const Ref<NSDictionary> attributes = text.attributesAtIndex(location + position, &range);
        const Ref<NSString> language = attributes->objectForKey<NSString>(*NSLanguageAttributeName);
        StyleRun style{.end = static_cast<uint32_t>(std::min<uint64_t>(range.end() - location, length_)),
                       .font = attributes->objectForKey<NSFont>(*NSFontAttributeName),
                       .kern = lengthAttribute(*attributes, *NSKernAttributeName),
                       .baselineOffset = lengthAttribute(*attributes, *NSBaselineOffsetAttributeName),
                       .language = language ? language->utf8() : std::string()};
        if (!style.font) style.font = defaultFont();
        if (!areEqual(before, attributes)) attributeStarts_.push_back(position);
        before = attributes;
        position = style.end;
        if (!styles_.empty() && styles_.back().kern == style.kern &&
            styles_.back().baselineOffset == style.baselineOffset && styles_.back().language == style.language &&
            styles_.back().font->looksLike(*style.font)) {
            styles_.back().end = style.end;
        } else {
            styles_.push_back(std::move(style));
        }
    }
}

void Paragraph::itemize(std::u16string_view paragraph) {
    const std::vector<uint8_t> levels = bidiLevels(paragraph, style_.baseWritingDirection, baseLevel_);
    UScriptCode script = USCRIPT_COMMON;
    size_t style = 0;
    for (uint32_t start = 0, end = 0; start < length_; start = end) {
        end = clusterEnd(start);
        while (styles_[style].end <= start) ++style;
        const Ref<NSFont>& font = styles_[style].font;
        const bool control = isControl(paragraph[start]);
        const UScriptCode own = control ? USCRIPT_COMMON : clusterScript(paragraph.substr(start, end - start));

        const TextItem* item = items_.empty() ? nullptr : &items_.back();
        const uint32_t itemLength = item ? start - item->start : 0;
        const bool isFull =
            itemLength >= kItemUnitsMax || (itemLength >= kItemUnits && breaks_[start] & TextBreak::lineMayBegin);
        // Characters common to all scripts join the preceding text, or at the start of a text the following text.
        const bool continues = item && !isFull && item->isControl == control && item->level == levels[start] &&
                               (own == USCRIPT_COMMON || own == script || script == USCRIPT_COMMON) &&
                               item->language == styles_[style].language &&
                               (item->font == font || item->font->looksLike(*font));
        if (!continues) {
            items_.push_back({.start = start,
                              .end = end,
                              .font = font,
                              .script = scriptTag(script),
                              .language = styles_[style].language,
                              .level = levels[start],
                              .isControl = control,
                              .glyphs = {}});
        }
        items_.back().end = end;
        if (own != USCRIPT_COMMON && own != script) {
            script = own;
            items_.back().script = scriptTag(own);
        }
    }
}

void Paragraph::joinGraphemes(std::vector<ShapedGlyph>& glyphs, bool isRightToLeft) const {
    const auto at = [&](size_t glyph) { return glyphs.begin() + static_cast<std::ptrdiff_t>(glyph); };
    size_t group = 0;  // the first glyph of the grapheme cluster
    for (size_t first = 0, last = 0; first < glyphs.size(); first = last) {
        const uint32_t cluster = glyphs[first].cluster;
        for (last = first; last < glyphs.size() && glyphs[last].cluster == cluster; ++last) {
        }
        if (first == 0 || breaks_[cluster] & TextBreak::clusterStart) {
            group = first;
            continue;
        }
        for (size_t i = first; i < last; ++i) glyphs[i].cluster = glyphs[group].cluster;
        // Within a cluster, glyphs are in drawing order: in right-to-left text, the later ones first.
        if (isRightToLeft) std::rotate(at(group), at(first), at(last));
    }
}

size_t Paragraph::itemIndexAt(uint32_t position) const {
    return static_cast<size_t>(std::ranges::upper_bound(items_, position, {}, &TextItem::end) - items_.begin());
}

size_t Paragraph::styleIndexAt(uint32_t position) const {
    return static_cast<size_t>(std::ranges::upper_bound(styles_, position, {}, &StyleRun::end) - styles_.begin());
}

uint32_t Paragraph::clusterEnd(uint32_t start) const {
    uint32_t end = start + 1;
    while (end < length_ && !(breaks_[end] & TextBreak::clusterStart)) ++end;
    return end;
}

const std::vector<ShapedGlyph>& Paragraph::glyphsOfItem(size_t item, std::u16string_view paragraph) {
    TextItem& shaped = items_[item];
    if (!shaped.isShaped) {
        shaped.glyphs = shapePart(item, paragraph, {shaped.start, shaped.end - shaped.start});
        shaped.isShaped = true;
    }
    return shaped.glyphs;
}

ShapingItem Paragraph::shapingItem(size_t item, std::u16string_view text, Range range) const {
    const TextItem& source = items_[item];
    return {.text = text,
            .range = range,
            .font = source.font,
            .script = source.script,
            .isRightToLeft = (source.level & 1) != 0,
            .language = source.language};
}

std::vector<Range> Paragraph::spacedRanges(Range part) const {
    std::vector<Range> ranges;
    uint32_t start = part.location;
    for (size_t style = styleIndexAt(start); style < styles_.size() && start < part.end(); ++style) {
        const auto end = static_cast<uint32_t>(std::min<uint64_t>(styles_[style].end, part.end()));
        if (styles_[style].kern != 0) ranges.push_back({start, end - start});
        start = end;
    }
    return ranges;
}

std::vector<Range> Paragraph::hiddenStyleStarts(const std::vector<ShapedGlyph>& glyphs, Range part) const {
    std::vector<Range> ranges;
    size_t glyph = 0;
    for (auto at = std::ranges::upper_bound(attributeStarts_, part.location); at != attributeStarts_.end(); ++at) {
        if (*at >= part.end()) break;
        while (glyph < glyphs.size() && glyphs[glyph].cluster < *at) ++glyph;
        const auto ligatureEnd = static_cast<uint32_t>(glyph < glyphs.size() ? glyphs[glyph].cluster : part.end());
        if (ligatureEnd == *at || glyph == 0 || !(breaks_[*at] & TextBreak::clusterStart)) continue;
        // Split off the shorter side, so that the other may still be a ligature.
        const uint32_t ligature = glyphs[glyph - 1].cluster;
        if (*at - ligature < ligatureEnd - *at)
            ranges.push_back({ligature, *at - ligature});
        else
            ranges.push_back({*at, ligatureEnd - *at});
    }
    return ranges;
}

std::vector<ShapedGlyph> Paragraph::shapePart(size_t item, std::u16string_view paragraph, Range part) const {
    const TextItem& source = items_[item];
    if (source.isControl) return controlGlyphs(breaks_, part);
    ShapingItem shaping = shapingItem(item, paragraph, part);
    shaping.withoutLigatures = spacedRanges(part);
    std::vector<ShapedGlyph> glyphs = shapingCache_->shape(shaping);
    const std::vector<Range> hidden = hiddenStyleStarts(glyphs, part);
    if (!hidden.empty()) {
        shaping.withoutLigatures.insert(shaping.withoutLigatures.end(), hidden.begin(), hidden.end());
        glyphs = shapingCache_->shape(shaping);
    }
    // Every character must belong to some glyph's cluster, whatever the font does.
    if (glyphs.empty()) return controlGlyphs(breaks_, part);
    glyphs.front().cluster = part.location;
    joinGraphemes(glyphs, source.level & 1);
    for (size_t i = 0; i < glyphs.size(); ++i) {
        const bool isAlone = (i == 0 || glyphs[i - 1].cluster != glyphs[i].cluster) &&
                             (i + 1 == glyphs.size() || glyphs[i + 1].cluster == glyphs[i].cluster + 1);
        if (isAlone && paragraph[glyphs[i].cluster] == kSoftHyphen) {
            glyphs[i] = {
                .glyph = NSControlGlyph, .cluster = glyphs[i].cluster, .isUnsafeToBreak = glyphs[i].isUnsafeToBreak};
        }
    }
    return glyphs;
}

}  // namespace qz
