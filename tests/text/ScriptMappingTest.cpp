// Characters, glyphs and places of the sample lines of all scripts, whole and broken.

#include <gmock/gmock.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>

#include "platform/text/CaretGeometry.h"
#include "tests/text/ScriptSamples.h"

namespace qz {
namespace {

std::vector<uint32_t> boundaries(UBreakIteratorType type, const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    UBreakIterator* const iterator = ubrk_open(type, "", text.data(), static_cast<int32_t>(text.size()), &status);
    std::vector<uint32_t> found;
    for (int32_t i = ubrk_first(iterator); i != UBRK_DONE; i = ubrk_next(iterator)) {
        found.push_back(static_cast<uint32_t>(i));
    }
    ubrk_close(iterator);
    return found;
}

std::string describe(const ScriptSample& sample) {
    return "line " + std::to_string(sample.line) + ", " + sample.script + ": " + sample.text;
}

TEST(ScriptMapping, charactersAndGlyphsLeadToEachOther) {
    for (const ScriptSample& sample : scriptSamples()) {
        SCOPED_TRACE(describe(sample));
        for (const float width : {0.0f, 150.0f}) {
            const TextSystem system(*sample.attributedText(), {width, 0});
            const NSLayoutManager& manager = *system.manager;
            std::vector<int> covered(manager.numberOfGlyphs());
            const std::vector<uint32_t> clusters = boundaries(UBRK_CHARACTER, system.storage->characters());
            Range before;
            for (size_t i = 0; i + 1 < clusters.size(); ++i) {
                const Range characters = {clusters[i], clusters[i + 1] - clusters[i]};
                Range whole;
                const Range glyphs = manager.glyphRangeForCharacterRange(characters, &whole);
                ASSERT_GE(glyphs.length, 1u);
                EXPECT_TRUE(whole.location <= characters.location && whole.end() >= characters.end())
                    << "no glyph of a grapheme cluster stands for a part of it only, at " << clusters[i];
                Range back;
                EXPECT_EQ(manager.characterRangeForGlyphRange(glyphs, &back), whole);
                EXPECT_EQ(back, glyphs);
                EXPECT_EQ(manager.characterIndexForGlyphAtIndex(glyphs.location), whole.location);
                if (glyphs != before) {
                    for (uint32_t g = glyphs.location; g < glyphs.end(); ++g) ++covered[g];
                }
                before = glyphs;
            }
            // Any stretch of characters, through its glyphs, grows to whole clusters and then stays.
            for (uint32_t start = 0; start < system.storage->length(); ++start) {
                const Range stretch = {start, std::min(7u, system.storage->length() - start)};
                Range whole, back;
                const Range glyphs = manager.glyphRangeForCharacterRange(stretch, &whole);
                EXPECT_TRUE(whole.location <= start && whole.end() >= stretch.end());
                EXPECT_EQ(manager.characterRangeForGlyphRange(glyphs, &back), whole);
                EXPECT_EQ(back, glyphs);
            }
            EXPECT_THAT(covered, testing::Each(1)) << "every glyph belongs to one cluster";
        }
    }
}

TEST(ScriptMapping, selectionsCoverEachClusterOnce) {
    for (const ScriptSample& sample : scriptSamples()) {
        SCOPED_TRACE(describe(sample));
        const TextSystem system(*sample.attributedText(), {260, 0});
        const std::vector<CaretLine> lines = caretLines(*system.manager, *system.container);
        const std::vector<uint32_t> clusters = boundaries(UBRK_CHARACTER, system.storage->characters());
        double areaOfClusters = 0;
        std::vector<NSRect> all;
        for (size_t i = 0; i + 1 < clusters.size(); ++i) {
            const std::vector<NSRect> own = selectionRects(lines, {clusters[i], clusters[i + 1] - clusters[i]});
            ASSERT_LE(own.size(), 1u) << "a cluster stands in one place";
            if (own.empty()) continue;
            all.push_back(own[0]);
            areaOfClusters += double{own[0].size.width} * double{own[0].size.height};
            // A click before and behind the middle of a cluster leads to its two ends.
            const CaretLine& line = lines[lineAtY(lines, own[0].origin.y + own[0].size.height / 2)];
            const CaretPlace left = line.placeAtX(own[0].origin.x + own[0].size.width / 4);
            const CaretPlace right = line.placeAtX(own[0].origin.x + own[0].size.width * 3 / 4);
            EXPECT_EQ(std::minmax(left.index, right.index), std::minmax(clusters[i], clusters[i + 1]));
            EXPECT_NEAR(line.xOfCaret(left), own[0].origin.x, 0.01);
            EXPECT_NEAR(line.xOfCaret(right), own[0].maxX(), 0.01);
        }
        double area = 0;
        for (const NSRect& rect : selectionRects(lines, {0, system.storage->length()})) {
            area += double{rect.size.width} * double{rect.size.height};
        }
        EXPECT_NEAR(area, areaOfClusters, 0.5) << "no gap and no overlap";
        for (size_t i = 0; i < all.size(); ++i) {
            for (size_t j = i + 1; j < all.size(); ++j) {
                const NSRect overlap = NSIntersectionRect(all[i], all[j]);
                EXPECT_LT(overlap.size.width * overlap.size.height, 0.1f) << i << " and " << j;
            }
        }
    }
}

TEST(ScriptMapping, linesAreAsLongAsFitsAndEndWhereTheyMay) {
    for (const ScriptSample& sample : scriptSamples()) {
        SCOPED_TRACE(describe(sample));
        const Ref<NSAttributedString> text = sample.attributedText();
        const float room = 200;
        const TextSystem system(*text, {room, 0});
        const std::vector<uint32_t> clusters = boundaries(UBRK_CHARACTER, text->characters());
        std::vector<uint32_t> places;
        for (const uint32_t place : boundaries(UBRK_LINE, text->characters())) {
            // A line never begins within a cluster, nor within a Korean word.
            const auto isHangul = [&](uint32_t i) {
                return i < text->length() &&
                       u_getIntPropertyValue(text->characters()[i], UCHAR_HANGUL_SYLLABLE_TYPE) != U_HST_NOT_APPLICABLE;
            };
            const bool isInWord = place > 0 && isHangul(place - 1) && isHangul(place);
            if (std::ranges::binary_search(clusters, place) && !isInWord) places.push_back(place);
        }
        const auto widthOfStretch = [&](uint32_t start, uint32_t end) {
            return TextSystem(*text->attributedSubstringFromRange({start, end - start})).usedRect().size.width;
        };
        for (const Range& line : system.lines()) {
            const Range characters = system.manager->characterRangeForGlyphRange(line);
            EXPECT_TRUE(std::ranges::binary_search(clusters, characters.end()));
            EXPECT_LE(system.manager->lineFragmentUsedRectForGlyphAtIndex(line.location).size.width, room + 0.02f);
            if (characters.end() == text->length()) continue;
            const auto next = std::ranges::upper_bound(places, static_cast<uint32_t>(characters.end()));
            const bool isPlace = std::ranges::binary_search(places, static_cast<uint32_t>(characters.end()));
            const bool isCutWord = std::ranges::upper_bound(places, characters.location) == next;
            EXPECT_TRUE(isPlace || isCutWord) << "broken at " << characters.end();
            if (isPlace && next != places.end()) {
                EXPECT_GT(widthOfStretch(characters.location, *next), room) << "more would have fitted";
            }
        }
    }
}

}  // namespace
}  // namespace qz
