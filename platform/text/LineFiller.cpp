#include "platform/text/LineFiller.h"

#include <algorithm>
#include <cmath>

#include <unicode/uchar.h>

#include "platform/text/Joining.h"
#include "platform/text/ParagraphRange.h"

namespace qz {
namespace {

constexpr char16_t kSoftHyphen = 0x00AD;
constexpr char32_t kHyphen = 0x2010;
// Points by which a line may exceed its room. A box as wide as its widest line must fit that line again, although
// widths have been through 32-bit floats.
constexpr double kTolerance = 0.01;
// If a line begins inside unbreakable text, such as an endless word, only as much is reshaped as a line may need: this
// many units, doubled while that is not enough.
constexpr uint32_t kScanUnits = 32;
// How far a glyph's shape may depend on the following text.
constexpr uint32_t kContextUnits = 16;

/// The first glyph whose cluster begins at or after the position.
size_t glyphAt(const std::vector<ShapedGlyph>& glyphs, uint32_t position) {
    return static_cast<size_t>(std::ranges::lower_bound(glyphs, position, {}, &ShapedGlyph::cluster) - glyphs.begin());
}

bool isSafe(const std::vector<ShapedGlyph>& glyphs, size_t glyph, uint32_t position) {
    return glyph < glyphs.size() && glyphs[glyph].cluster == position && !glyphs[glyph].isUnsafeToBreak;
}

/// The first safe place from which a line that begins at `start` may reuse the glyphs of the whole item.
uint32_t safeStart(const std::vector<ShapedGlyph>& glyphs, const TextItem& item, uint32_t start) {
    if (start == item.start) return start;
    size_t glyph = glyphAt(glyphs, start);
    if (isSafe(glyphs, glyph, start)) return start;
    while (glyph < glyphs.size() && (glyphs[glyph].cluster == start || glyphs[glyph].isUnsafeToBreak)) ++glyph;
    return glyph < glyphs.size() ? glyphs[glyph].cluster : item.end;
}

/// The last safe place up to which a line that ends at `end` may reuse them.
uint32_t safeEnd(const std::vector<ShapedGlyph>& glyphs, const TextItem& item, uint32_t end) {
    if (end == item.end) return end;
    size_t glyph = glyphAt(glyphs, end);
    if (isSafe(glyphs, glyph, end)) return end;
    while (glyph > 0) {
        const ShapedGlyph& before = glyphs[--glyph];
        if (!before.isUnsafeToBreak && (glyph == 0 || glyphs[glyph - 1].cluster != before.cluster))
            return before.cluster;
    }
    return item.start;
}

bool isDigit(char16_t unit) {
    return u_charType(unit) == U_DECIMAL_DIGIT_NUMBER;
}

LineGlyph lineGlyph(const ShapedGlyph& shaped, uint8_t level) {
    return {.glyph = shaped.glyph,
            .cluster = shaped.cluster,
            .advance = shaped.advance,
            .offsetX = shaped.offsetX,
            .offsetY = shaped.offsetY,
            .level = level};
}

}  // namespace

void addSpaceBehind(std::vector<LineGlyph>& glyphs, size_t first, size_t last, float space) {
    if (!(glyphs[first].level & 1)) {
        glyphs[last - 1].advance += space;
        return;
    }
    glyphs[first].advance += space;
    glyphs[first].offsetX += space;
}

size_t endOfCluster(const std::vector<LineGlyph>& glyphs, size_t first) {
    size_t last = first + 1;
    while (last < glyphs.size() && glyphs[last].cluster == glyphs[first].cluster) ++last;
    return last;
}

void LineFiller::appendItem(std::vector<LineGlyph>& glyphs, size_t item, uint32_t start, uint32_t end) {
    const TextItem& source = paragraph_.items()[item];
    const std::vector<ShapedGlyph>& shaped = paragraph_.glyphsOfItem(item, text_);
    const auto append = [&](const std::vector<ShapedGlyph>& from, size_t first, size_t last) {
        for (size_t i = first; i < last; ++i) glyphs.push_back(lineGlyph(from[i], source.level));
    };
    const auto appendAnew = [&](uint32_t from, uint32_t to) {
        if (from >= to) return;
        const std::vector<ShapedGlyph> part = paragraph_.shapePart(item, text_, {from, to - from});
        append(part, 0, part.size());
    };

    const size_t firstGlyph = glyphs.size();
    const uint32_t takenFrom = safeStart(shaped, source, start);
    const uint32_t takenTo = safeEnd(shaped, source, end);
    if (takenFrom < takenTo) {
        appendAnew(start, takenFrom);
        append(shaped, glyphAt(shaped, takenFrom), glyphAt(shaped, takenTo));
        appendAnew(takenTo, end);
    } else {
        appendAnew(start, end);
    }
    addKern(glyphs, firstGlyph);
}

void LineFiller::addKern(std::vector<LineGlyph>& glyphs, size_t firstGlyph) const {
    if (firstGlyph == glyphs.size()) return;
    const std::vector<StyleRun>& styles = paragraph_.styles();
    size_t style = paragraph_.styleIndexAt(glyphs[firstGlyph].cluster);
    for (size_t first = firstGlyph, last = 0; first < glyphs.size(); first = last) {
        last = endOfCluster(glyphs, first);
        while (styles[style].end <= glyphs[first].cluster) ++style;
        const uint32_t end = last < glyphs.size() ? glyphs[last].cluster : static_cast<uint32_t>(text_.size());
        // Space between joined letters would separate them.
        if (styles[style].kern != 0 && glyphs[first].glyph != NSControlGlyph && !isJoined(text_, end)) {
            addSpaceBehind(glyphs, first, last, styles[style].kern);
        }
    }
}

bool LineFiller::isHangingCluster(uint32_t start, uint32_t end) const {
    return paragraph_.breaks()[start] & paragraph_.breaks()[end - 1] & TextBreak::hangs;
}

uint32_t LineFiller::clusterStartFrom(uint64_t position, uint32_t end) const {
    while (position < end && !(paragraph_.breaks()[position] & TextBreak::clusterStart)) ++position;
    return static_cast<uint32_t>(std::min<uint64_t>(position, end));
}

uint32_t LineFiller::firstScanEnd(size_t item, uint32_t from) {
    const TextItem& source = paragraph_.items()[item];
    const uint32_t takenFrom = safeStart(paragraph_.glyphsOfItem(item, text_), source, from);
    return takenFrom - from <= kScanUnits ? source.end : clusterStartFrom(uint64_t{from} + kScanUnits, source.end);
}

std::optional<LineFiller::Overflow> LineFiller::scan(const std::vector<LineGlyph>& glyphs, uint32_t end,
                                                     uint32_t lineStart, double lineEnd, LinePen& pen) const {
    for (size_t first = 0, last = 0; first < glyphs.size(); first = last) {
        last = endOfCluster(glyphs, first);
        const uint32_t cluster = glyphs[first].cluster;
        if (cluster > lineStart && paragraph_.breaks()[cluster] & TextBreak::lineMustBegin) return Overflow{cluster, 0};
        const uint32_t clusterEnd = last < glyphs.size() ? glyphs[last].cluster : end;
        if (isDecimalPoint(cluster)) pen.passDecimalPoint();
        if (text_[cluster] == u'\t') pen.tab();
        for (size_t i = first; i < last; ++i) pen.advance(glyphs[i].advance);
        if (pen.position() > lineEnd && !isHangingCluster(cluster, clusterEnd)) return Overflow{0, clusterEnd};
    }
    return std::nullopt;
}

LineFiller::Overflow LineFiller::findOverflow(uint32_t start, double available) {
    LinePen pen = penAt(start);
    const double lineEnd = pen.position() + available + kTolerance;
    std::vector<LineGlyph> glyphs;
    for (size_t item = paragraph_.itemIndexAt(start); item < paragraph_.items().size(); ++item) {
        const TextItem& source = paragraph_.items()[item];
        const uint32_t from = std::max(start, source.start);
        uint32_t to = firstScanEnd(item, from);
        for (;;) {
            glyphs.clear();
            appendItem(glyphs, item, from, to);
            LinePen scanned = pen;
            const std::optional<Overflow> overflow = scan(glyphs, to, start, lineEnd, scanned);
            // Near a cut, glyphs may still change with the following text.
            if (to == source.end || (overflow && overflow->clusterEnd + kContextUnits <= to)) {
                if (overflow) return *overflow;
                pen = scanned;
                break;
            }
            to = clusterStartFrom(uint64_t{from} + 2 * uint64_t{to - from}, source.end);
        }
    }
    return {paragraph_.length(), 0};
}

double LineFiller::headIndent(uint32_t start) const {
    return start == 0 ? paragraph_.style().firstLineHeadIndent : paragraph_.style().headIndent;
}

LineSpan LineFiller::span(uint32_t start, float fragmentWidth, float padding) const {
    const double tailIndent = paragraph_.style().tailIndent, head = headIndent(start);
    const double width = double{fragmentWidth} - 2 * double{padding};
    const double lineEnd = tailIndent > 0 ? std::min(tailIndent, width) : width + tailIndent;
    const bool isUnbounded = fragmentWidth >= kUnboundedLength && tailIndent <= 0;
    const bool isIndentedAtRight = paragraph_.isRightToLeft() && fragmentWidth < kUnboundedLength;
    return {padding + (isIndentedAtRight ? width - lineEnd : head), lineEnd - head, isUnbounded};
}

bool LineFiller::isDecimalPoint(uint32_t position) const {
    const char16_t unit = text_[position];
    if (unit != u'.' && unit != u',' && unit != 0x066B) return false;
    return position > 0 && position + 1 < text_.size() && isDigit(text_[position - 1]) && isDigit(text_[position + 1]);
}

LineContent LineFiller::fill(uint32_t start, double available) {
    // White space always fits; NaN counts as no width.
    available = std::max(0.0, available);
    const Overflow overflow = findOverflow(start, available);
    if (overflow.clusterEnd == 0) return content(start, overflow.lineEnd, false);
    // First between words, then between any clusters. A line reshaped up to its end may be wider or narrower than its
    // part of the whole: even the cluster that overflowed may fit at the end of a line.
    const uint32_t lastEnd = std::min(overflow.clusterEnd, paragraph_.length() - 1);
    for (const uint8_t place : {TextBreak::lineMayBegin, TextBreak::clusterStart}) {
        for (uint32_t end = lastEnd; end > start; --end) {
            // Breaking before a soft hyphen would lose the hyphen.
            if (!(paragraph_.breaks()[end] & place) || text_[end] == kSoftHyphen) continue;
            LineContent line = content(start, end, true);
            if (line.width <= available + kTolerance) return line;
        }
    }
    const uint32_t end = paragraph_.clusterEnd(start);
    return content(start, end, end < paragraph_.length());
}

LineContent LineFiller::content(uint32_t start, uint32_t end, bool isWrapped) {
    LineContent line{.start = start, .end = end, .isWrapped = isWrapped, .glyphs = {}};
    size_t item = paragraph_.itemIndexAt(start);
    for (; item < paragraph_.items().size() && paragraph_.items()[item].start < end; ++item) {
        const TextItem& source = paragraph_.items()[item];
        appendItem(line.glyphs, item, std::max(start, source.start), std::min(end, source.end));
    }
    if (isWrapped) showHyphen(line);
    hangWhiteSpace(line);
    setTabs(line);
    for (const LineGlyph& glyph : line.glyphs) line.width += glyph.advance;
    return line;
}

void LineFiller::showHyphen(LineContent& content) const {
    if (content.glyphs.empty() || text_[content.end - 1] != kSoftHyphen) return;
    LineGlyph& last = content.glyphs.back();
    if (last.glyph != NSControlGlyph || last.cluster != content.end - 1) return;
    const NSFont& font = *paragraph_.styles()[paragraph_.styleIndexAt(last.cluster)].font;
    NSGlyph hyphen = font.glyphForCharacter(kHyphen);
    if (hyphen == 0) hyphen = font.glyphForCharacter(U'-');
    if (hyphen == 0) return;
    last.glyph = hyphen;
    last.advance = font.advancementForGlyph(last.glyph).width;
}

void LineFiller::setTabs(LineContent& content) const {
    LinePen pen = penAt(content.start);
    LineGlyph* tab = nullptr;
    const auto finishTab = [&] {
        if (tab) tab->advance = static_cast<float>(pen.tabWidth());
    };
    for (LineGlyph& glyph : content.glyphs) {
        if (glyph.hangs) break;
        if (isDecimalPoint(glyph.cluster)) pen.passDecimalPoint();
        if (text_[glyph.cluster] == u'\t') {
            finishTab();
            pen.tab();
            tab = &glyph;
        } else {
            pen.advance(glyph.advance);
        }
    }
    finishTab();
}

void LineFiller::hangWhiteSpace(LineContent& content) const {
    uint32_t hangingFrom = content.end;
    while (hangingFrom > content.start && paragraph_.breaks()[hangingFrom - 1] & TextBreak::hangs) --hangingFrom;
    for (size_t i = content.glyphs.size(); i > 0 && content.glyphs[i - 1].cluster >= hangingFrom; --i) {
        LineGlyph& glyph = content.glyphs[i - 1];
        glyph.hangs = true;
        glyph.advance = 0;
        glyph.offsetX = 0;
        // White space at the end of a line goes to the end in the paragraph's direction, whatever its run.
        glyph.level = paragraph_.baseLevel();
    }
}

LineMetrics LineFiller::metrics(uint32_t start, uint32_t end) const {
    // Line ends have no height, unless the line has nothing else.
    while (end > start + 1 && (endsLine(text_[end - 1]) || endsParagraph(text_, end - 1) || text_[end - 1] == u'\r')) {
        --end;
    }
    float ascent = 0, descent = 0, leading = 0;
    const std::vector<StyleRun>& styles = paragraph_.styles();
    uint32_t position = start;
    for (size_t style = paragraph_.styleIndexAt(start); style < styles.size() && position < end; ++style) {
        const StyleRun& run = styles[style];
        ascent = std::max(ascent, run.font->ascender() + run.baselineOffset);
        descent = std::max(descent, -run.font->descender() - run.baselineOffset);
        leading = std::max(leading, run.font->leading());
        position = run.end;
    }
    float height = ascent + descent + leading;
    const NSParagraphStyle::Values& limits = paragraph_.style();
    if (limits.lineHeightMultiple > 0) height *= limits.lineHeightMultiple;
    if (limits.maximumLineHeight > 0) height = std::min(height, limits.maximumLineHeight);
    height = std::max(height, limits.minimumLineHeight);
    return {height, height - descent - leading};
}

}  // namespace qz
