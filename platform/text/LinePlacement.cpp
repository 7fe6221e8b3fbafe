#include "platform/text/LinePlacement.h"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/utf16.h>

#include "platform/text/Kashida.h"

namespace qz {
namespace {

struct GlyphRun {
    size_t first;
    size_t last;
};

NSTextAlignment alignmentOf(const LineContent& content, const Paragraph& paragraph) {
    const NSTextAlignment alignment = paragraph.style().alignment;
    const auto natural = paragraph.isRightToLeft() ? NSTextAlignment::right : NSTextAlignment::left;
    switch (alignment) {
        case NSTextAlignment::left:
        case NSTextAlignment::right:
        case NSTextAlignment::center:
            return alignment;
        case NSTextAlignment::justified:
            return content.isWrapped ? alignment : natural;
        default:
            return natural;
    }
}

bool isBlank(char16_t unit) {
    return unit == u' ' || unit == 0x00A0 || unit == 0x3000;
}

/// How to spread text without blanks between words over a justified line.
enum class Spreading { none, ideographs, syllables };

Spreading spreadingOf(std::u16string_view text, size_t index) {
    UChar32 character;
    U16_GET(text.data(), 0, index, text.size(), character);
    // Thai, Lao, Khmer, Burmese
    if (u_getIntPropertyValue(character, UCHAR_LINE_BREAK) == U_LB_COMPLEX_CONTEXT) return Spreading::syllables;
    const int32_t width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    if (width != U_EA_WIDE && width != U_EA_FULLWIDTH) return Spreading::none;
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(character, &status) == USCRIPT_HANGUL ? Spreading::none : Spreading::ideographs;
}

/// The clusters after which a justified line gets space: blanks, break opportunities between ideographs, and clusters
/// of scripts without word separators; if there are none, all break opportunities. Excludes clusters before a tab,
/// since the tab stop fixes the text after it.
std::vector<size_t> stretchableClusters(const LineContent& content, const Paragraph& paragraph,
                                        std::u16string_view text) {
    std::vector<size_t> best, breaks;
    for (size_t first = 0, last = 0; first < content.glyphs.size() && !content.glyphs[first].hangs; first = last) {
        last = endOfCluster(content.glyphs, first);
        const uint32_t cluster = content.glyphs[first].cluster;
        if (text[cluster] == u'\t') {
            best.clear();
            breaks.clear();
        }
        if (last == content.glyphs.size() || content.glyphs[last].hangs) break;
        const uint32_t next = content.glyphs[last].cluster;
        const bool isBreak = paragraph.breaks()[next] & TextBreak::lineMayBegin;
        const Spreading spreading = spreadingOf(text, cluster);
        const bool isSpread = spreading != Spreading::none && spreading == spreadingOf(text, next) &&
                              (isBreak || spreading == Spreading::syllables);
        if (isBlank(text[cluster]) || isSpread) best.push_back(first);
        if (isBreak) breaks.push_back(first);
    }
    return best.empty() ? breaks : best;
}

void justify(LineContent& content, const Paragraph& paragraph, std::u16string_view text, double available) {
    if (content.width >= available) return;
    stretchByKashidas(content, paragraph, text, available - content.width);
    const std::vector<size_t> clusters = stretchableClusters(content, paragraph, text);
    if (clusters.empty()) return;
    const double space = (available - content.width) / static_cast<double>(clusters.size());
    for (const size_t first : clusters) {
        addSpaceBehind(content.glyphs, first, endOfCluster(content.glyphs, first), static_cast<float>(space));
    }
    content.width = available;
}

std::vector<GlyphRun> runsInVisualOrder(const std::vector<LineGlyph>& glyphs) {
    std::vector<GlyphRun> runs;
    std::vector<uint8_t> levels;
    for (size_t i = 0; i < glyphs.size(); ++i) {
        if (levels.empty() || levels.back() != glyphs[i].level) {
            runs.push_back({i, i});
            levels.push_back(glyphs[i].level);
        }
        runs.back().last = i + 1;
    }
    std::vector<GlyphRun> ordered;
    for (const size_t run : visualOrder(levels)) ordered.push_back(runs[run]);
    return ordered;
}

/// Sets each glyph's x by walking the line from left to right.
void setPens(const std::vector<LineGlyph>& glyphs, double pen, std::vector<PlacedGlyph>& placed) {
    const auto setCluster = [&](size_t first, size_t last) {
        for (size_t i = first; i < last; ++i) {
            placed[i].pen = static_cast<float>(pen);
            placed[i].location.x = static_cast<float>(pen + glyphs[i].offsetX);
            pen += glyphs[i].advance;
        }
    };
    for (const GlyphRun& run : runsInVisualOrder(glyphs)) {
        if (!(glyphs[run.first].level & 1)) {
            setCluster(run.first, run.last);
            continue;
        }
        for (size_t last = run.last, first = last; last > run.first; last = first) {
            first = last - 1;
            while (first > run.first && glyphs[first - 1].cluster == glyphs[first].cluster) --first;
            setCluster(first, last);
        }
    }
}

void setBaselines(const LineContent& content, const Paragraph& paragraph, float baseline,
                  std::vector<PlacedGlyph>& placed) {
    if (placed.empty()) return;
    size_t style = paragraph.styleIndexAt(content.glyphs.front().cluster);
    for (size_t i = 0; i < placed.size(); ++i) {
        while (paragraph.styles()[style].end <= content.glyphs[i].cluster) ++style;
        placed[i].location.y = baseline - paragraph.styles()[style].baselineOffset - content.glyphs[i].offsetY;
    }
}

}  // namespace

PlacedLine placeLine(LineContent content, const Paragraph& paragraph, std::u16string_view paragraphText,
                     uint32_t location, const LineMetrics& metrics, const LineRoom& room) {
    const NSTextAlignment alignment = alignmentOf(content, paragraph);
    double start = 0;
    if (!room.span.isUnbounded) {
        if (alignment == NSTextAlignment::justified) justify(content, paragraph, paragraphText, room.span.width);
        const double free = room.span.width - content.width;
        if (alignment == NSTextAlignment::right) start = free;
        if (alignment == NSTextAlignment::center) start = free / 2;
        // Text wider than its line extends beyond its end.
        if (free < 0) start = paragraph.isRightToLeft() ? free : 0;
    }
    start += room.span.left;

    PlacedLine line;
    line.glyphs.reserve(content.glyphs.size());
    for (const LineGlyph& glyph : content.glyphs) {
        line.glyphs.push_back({.glyph = glyph.glyph,
                               .character = location + glyph.cluster,
                               .location = {},
                               .pen = 0,
                               .advance = glyph.advance,
                               .isNotShown = glyph.hangs || glyph.glyph == NSControlGlyph,
                               .isRightToLeft = (glyph.level & 1) != 0});
    }
    setPens(content.glyphs, start, line.glyphs);
    setBaselines(content, paragraph, metrics.baseline, line.glyphs);

    const NSRect& fragment = room.fragment;
    const double left = std::max(0.0, start - room.padding);
    const double right = std::min(double{fragment.size.width}, start + content.width + room.padding);
    line.usedRect = {{static_cast<float>(fragment.origin.x + left), fragment.origin.y},
                     {static_cast<float>(std::max(0.0, right - left)), std::min(metrics.height, fragment.size.height)}};
    return line;
}

}  // namespace qz
