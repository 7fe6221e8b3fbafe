// Characters, glyphs and places of the sample lines of all scripts, whole and broken.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>

#include "platform/foundation/ObjectMap.h"
#include "platform/text/CaretGeometry.h"
#include "platform/text/FontFace.h"
#include "platform/text/TextBreaker.h"
#include "tests/text/TextSystem.h"

namespace qz {
namespace {

/// A line of data/scripts.txt.
struct ScriptSample {
    std::string script;
    std::vector<Ref<NSFont>> fonts;
    std::string text;  ///< UTF-8
    int line;

    Ref<NSAttributedString> attributedText() const {
        const auto result = NSMutableAttributedString::init();
        const std::u16string characters = NSString::stringWithUTF8String(text)->characters();
        const std::vector<uint8_t> clusters = TextBreaker::clustersInText(characters);
        for (size_t start = 0, end = 0; start < characters.size(); start = end) {
            end = start + 1;
            while (end < characters.size() && !clusters[end]) ++end;
            const auto cluster = std::u16string_view(characters).substr(start, end - start);
            const auto font = std::ranges::find_if(fonts, [&](const auto& f) { return f->coversText(cluster); });
            ObjectMap attributes;
            attributes.set(NSFontAttributeName, font != fonts.end() ? *font : fonts.front());
            result->appendString(cluster, NSDictionary::dictionaryWithMap(std::move(attributes)));
        }
        return result;
    }
};

constexpr float kSampleSize = 32;

std::vector<ScriptSample> scriptSamples() {
    std::vector<ScriptSample> samples;
    std::ifstream file(QZANNO_SCRIPT_SAMPLES);
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (line.empty() || line[0] == '#') continue;
        const size_t first = line.find('\t'), second = line.find('\t', first + 1);
        ScriptSample sample{line.substr(0, first), {}, line.substr(second + 1), number};
        std::istringstream names(line.substr(first + 1, second - first - 1));
        for (std::string name; names >> name;) {
            const auto font = NSFont::fontWithName(*NSString::stringWithUTF8String(name), kSampleSize);
            EXPECT_TRUE(font) << "line " << number << ": the font " << name << " is not installed";
            if (font) sample.fonts.push_back(font);
        }
        if (!sample.fonts.empty()) samples.push_back(std::move(sample));
    }
    EXPECT_GE(samples.size(), 149u);
    return samples;
}

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

constexpr float kTolerance = 1.0f / 32;  // pixels

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
template <class T>
using PangoRef = std::unique_ptr<T, Unref>;

/// What a line shows: its width, and its glyphs with their places from the start of the baseline.
struct Line {
    struct Glyph {
        NSGlyph glyph;
        float x, y;
    };
    float width = 0;
    std::vector<Glyph> glyphs;
};

/// Joiners and the like: Pango drops their glyphs, layout keeps blank ones without a width.
bool isInvisible(std::u16string_view text, uint32_t unit) {
    return u_hasBinaryProperty(text[unit], UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
}

Line lineOfLayout(const TextSystem& system) {
    const NSLayoutManager& manager = *system.manager;
    const NSAttributedString& text = *system.storage;
    const auto fontAt = [&](uint32_t i) {
        return text.attributesAtIndex(i)->objectForKey<NSFont>(*NSFontAttributeName);
    };
    float baseline = 0;
    for (uint32_t i = 0; i < text.length(); ++i) baseline = std::max(baseline, fontAt(i)->ascender());
    Line line{system.usedRect().size.width, {}};
    for (uint32_t i = 0; i < manager.numberOfGlyphs(); ++i) {
        const uint32_t character = manager.characterIndexForGlyphAtIndex(i);
        const NSGlyph glyph = manager.glyphAtIndex(i);
        if (manager.notShownAttributeForGlyphAtIndex(i) || isInvisible(text.characters(), character) ||
            (manager.advanceForGlyphAtIndex(i) == 0 && glyph == fontAt(character)->glyphForCharacter(U' ')))
            continue;
        const NSPoint location = manager.locationForGlyphAtIndex(i);
        line.glyphs.push_back({glyph, location.x, location.y - baseline});
    }
    return line;
}

class Pango {
public:
    Pango() {
        const PangoRef<cairo_font_options_t> options(cairo_font_options_create());
        cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(context_.get(), options.get());
        pango_context_set_round_glyph_positions(context_.get(), FALSE);
        pango_fc_font_map_set_default_substitute(PANGO_FC_FONT_MAP(map_.get()), &Pango::askForFile, this, nullptr);
    }

    Line layOut(const std::string& utf8, const NSAttributedString& fonts) {
        const PangoRef<PangoLayout> layout(pango_layout_new(context_.get()));
        pango_layout_set_text(layout.get(), utf8.data(), static_cast<int>(utf8.size()));
        pango_layout_set_attributes(layout.get(), attributes(fonts).get());

        Line line;
        PangoLayoutLine* const pangoLine = pango_layout_get_line_readonly(layout.get(), 0);
        PangoRectangle logical;
        pango_layout_line_get_extents(pangoLine, nullptr, &logical);
        line.width = static_cast<float>(logical.width) / PANGO_SCALE;
        double pen = 0;
        for (GSList* node = pangoLine->runs; node; node = node->next) {
            addRun(*static_cast<PangoLayoutRun*>(node->data), utf8, pen, line.glyphs);
        }
        return line;
    }

private:
    /// Names alone may lead to another file of the family.
    static void askForFile(FcPattern* pattern, gpointer pango) {
        FcChar8* family = nullptr;
        FcPatternGetString(pattern, FC_FAMILY, 0, &family);
        const auto& files = static_cast<Pango*>(pango)->files_;
        const auto file = files.find(reinterpret_cast<const char*>(family));
        if (file == files.end()) return;  // the font of the context, which no text uses
        FcPatternAddString(pattern, FC_FILE, reinterpret_cast<const FcChar8*>(file->second.c_str()));
    }

    PangoRef<PangoAttrList> attributes(const NSAttributedString& fonts) {
        PangoRef<PangoAttrList> list(pango_attr_list_new());
        pango_attr_list_insert(list.get(), pango_attr_fallback_new(FALSE));
        const auto byteOf = [&](uint64_t unit) {
            return static_cast<guint>(utf8FromUtf16(fonts.characters().substr(0, unit)).size());
        };
        for (uint32_t start = 0; start < fonts.length();) {
            Range run;
            const auto font = std::static_pointer_cast<NSFont>(
                fonts.attribute(*NSFontAttributeName, start, &run, {0, fonts.length()}));
            const PangoRef<PangoFontDescription> description(pango_font_description_new());
            const InstalledFont& installed = font->face().installedFont();
            files_[installed.familyName] = installed.path;
            pango_font_description_set_family(description.get(), installed.familyName.c_str());
            pango_font_description_set_absolute_size(description.get(), double{font->pointSize()} * PANGO_SCALE);
            PangoAttribute* const attribute = pango_attr_font_desc_new(description.get());
            attribute->start_index = byteOf(run.location);
            attribute->end_index = byteOf(run.end());
            pango_attr_list_insert(list.get(), attribute);
            start = static_cast<uint32_t>(run.end());
        }
        return list;
    }

    static void addRun(const PangoLayoutRun& run, const std::string& utf8, double& pen,
                       std::vector<Line::Glyph>& glyphs) {
        for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
            const auto& [glyph, geometry, attributes] = run.glyphs->glyphs[i];
            const auto byte = static_cast<size_t>(run.item->offset + run.glyphs->log_clusters[i]);
            if (glyph != PANGO_GLYPH_EMPTY && !isInvisible(utf16FromUtf8(utf8.substr(byte)), 0)) {
                glyphs.push_back({glyph, static_cast<float>((pen + geometry.x_offset) / PANGO_SCALE),
                                  static_cast<float>(geometry.y_offset) / PANGO_SCALE});
            }
            pen += geometry.width;
        }
    }

    std::map<std::string, std::string> files_;  // by family
    const PangoRef<PangoFontMap> map_{pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)};
    const PangoRef<PangoContext> context_{pango_font_map_create_context(map_.get())};
};

/// Sorts the glyphs first, since the two group them into clusters differently.
std::string difference(Line ours, Line theirs) {
    std::ostringstream text;
    if (std::abs(ours.width - theirs.width) > kTolerance)
        text << "width " << ours.width << " / " << theirs.width << ";";
    const auto isBefore = [](const Line::Glyph& a, const Line::Glyph& b) {
        return std::tie(a.glyph, a.x) < std::tie(b.glyph, b.x);
    };
    const auto isEqual = [](const Line::Glyph& a, const Line::Glyph& b) {
        return a.glyph == b.glyph && std::abs(a.x - b.x) <= kTolerance && std::abs(a.y - b.y) <= kTolerance;
    };
    for (Line* line : {&ours, &theirs}) std::ranges::sort(line->glyphs, isBefore);
    if (std::ranges::equal(ours.glyphs, theirs.glyphs, isEqual)) return text.str();
    for (const Line* line : {&ours, &theirs}) {
        for (const auto& [glyph, x, y] : line->glyphs) text << ' ' << glyph << '@' << x << ',' << y;
        text << (line == &ours ? " /" : "");
    }
    return text.str();
}

// Pango as a referee: the same lines in the same font files, without hinting, must have the same glyphs in the same
// places.
TEST(PangoComparison, sameGlyphsInTheSamePlaces) {
    Pango pango;
    for (const ScriptSample& sample : scriptSamples()) {
        const TextSystem system(*sample.attributedText());
        EXPECT_EQ(difference(lineOfLayout(system), pango.layOut(sample.text, *system.storage)), "")
            << "ours / Pango's, line " << sample.line << ", " << sample.script << ": " << sample.text;
    }
}

}  // namespace
}  // namespace qz
