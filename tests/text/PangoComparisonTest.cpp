// Pango as a referee: the same lines in the same font files, without hinting, must have the same glyphs in the same
// places.

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>
#include <unicode/uchar.h>

#include "platform/text/FontFace.h"
#include "tests/text/ScriptSamples.h"

namespace qz {
namespace {

constexpr float kTolerance = 1.0f / 32;  // pixels

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
    void operator()(cairo_font_options_t* options) const { cairo_font_options_destroy(options); }
};
template <class T>
using PangoRef = std::unique_ptr<T, Unref>;

struct Glyph {
    NSGlyph glyph;
    float x, y;
    double pen = 0;  ///< where the glyph's turn in the line comes
};
/// The glyphs of each cluster, in drawing order, by the first UTF-16 unit of the cluster.
using Clusters = std::map<uint32_t, std::vector<Glyph>>;

struct Line {
    Clusters clusters;
    float width = 0;
};

/// Joiners and the like: Pango drops their glyphs, layout keeps blank ones without a width.
bool isInvisible(std::u16string_view text, uint32_t unit) {
    return u_hasBinaryProperty(text[unit], UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
}

bool isBlank(const TextSystem& system, uint32_t glyph, uint32_t character) {
    if (system.manager->notShownAttributeForGlyphAtIndex(glyph)) return true;
    const auto font = system.storage->attributesAtIndex(character)->objectForKey<NSFont>(*NSFontAttributeName);
    return isInvisible(system.storage->characters(), character) ||
           (system.manager->advanceForGlyphAtIndex(glyph) == 0 &&
            system.manager->glyphAtIndex(glyph) == font->glyphForCharacter(U' '));
}

Line lineOfLayout(const TextSystem& system) {
    Line line{.clusters = {}, .width = system.usedRect().size.width};
    const NSLayoutManager& manager = *system.manager;
    for (uint32_t i = 0; i < manager.numberOfGlyphs(); ++i) {
        const uint32_t character = manager.characterIndexForGlyphAtIndex(i);
        if (isBlank(system, i, character)) continue;
        const NSPoint location = manager.locationForGlyphAtIndex(i);
        line.clusters[character].push_back({manager.glyphAtIndex(i), location.x, location.y});
    }
    return line;
}

/// The UTF-16 position of each byte of a UTF-8 text, and of its end.
std::vector<uint32_t> utf16Positions(const std::string& utf8) {
    std::vector<uint32_t> positions;
    uint32_t unit = 0;
    for (const char byte : utf8) {
        if ((byte & 0xC0) == 0x80) {
            positions.push_back(positions.back());
            continue;
        }
        positions.push_back(unit);
        unit += (byte & 0xF8) == 0xF0 ? 2 : 1;
    }
    positions.push_back(unit);
    return positions;
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
        const std::vector<uint32_t> positions = utf16Positions(utf8);
        pango_layout_set_attributes(layout.get(), attributes(fonts, positions).get());

        Line line;
        PangoLayoutLine* const pangoLine = pango_layout_get_line_readonly(layout.get(), 0);
        PangoRectangle logical;
        pango_layout_line_get_extents(pangoLine, nullptr, &logical);
        line.width = static_cast<float>(logical.width) / PANGO_SCALE;
        double pen = 0;
        for (GSList* node = pangoLine->runs; node; node = node->next) {
            addRun(*static_cast<PangoLayoutRun*>(node->data), utf8, fonts, positions, pen, line.clusters);
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

    PangoRef<PangoAttrList> attributes(const NSAttributedString& fonts, const std::vector<uint32_t>& positions) {
        PangoRef<PangoAttrList> list(pango_attr_list_new());
        pango_attr_list_insert(list.get(), pango_attr_fallback_new(FALSE));
        const auto byteOf = [&](uint32_t unit) {
            return static_cast<guint>(std::ranges::lower_bound(positions, unit) - positions.begin());
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
            attribute->end_index = byteOf(static_cast<uint32_t>(run.end()));
            pango_attr_list_insert(list.get(), attribute);
            start = static_cast<uint32_t>(run.end());
        }
        return list;
    }

    static void addRun(const PangoLayoutRun& run, const std::string& utf8, const NSAttributedString& fonts,
                       const std::vector<uint32_t>& positions, double& pen, Clusters& clusters) {
        const auto offset = static_cast<size_t>(run.item->offset);
        const auto font = fonts.attributesAtIndex(positions[offset])->objectForKey<NSFont>(*NSFontAttributeName);
        FcChar8* file = nullptr;
        FcPatternGetString(pango_fc_font_get_pattern(PANGO_FC_FONT(run.item->analysis.font)), FC_FILE, 0, &file);
        EXPECT_EQ(reinterpret_cast<const char*>(file), font->face().installedFont().path) << utf8;
        for (int i = 0; i < run.glyphs->num_glyphs; ++i) {
            const PangoGlyphInfo& info = run.glyphs->glyphs[i];
            const uint32_t unit = positions[offset + static_cast<size_t>(run.glyphs->log_clusters[i])];
            if (info.glyph != PANGO_GLYPH_EMPTY && !isInvisible(fonts.characters(), unit)) {
                clusters[unit].push_back({info.glyph, static_cast<float>((pen + info.geometry.x_offset) / PANGO_SCALE),
                                          static_cast<float>(info.geometry.y_offset) / PANGO_SCALE, pen + i});
            }
            pen += info.geometry.width;
        }
    }

    std::map<std::string, std::string> files_;  // by family
    const PangoRef<PangoFontMap> map_{pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)};
    const PangoRef<PangoContext> context_{pango_font_map_create_context(map_.get())};
};

/// Pango keeps marks apart from their letters: puts its clusters into those of layout, which begin where its do.
void mergeClusters(Line& theirs, const Line& ours) {
    Clusters merged;
    for (const auto& [start, glyphs] : theirs.clusters) {
        const auto behind = ours.clusters.upper_bound(start);
        std::vector<Glyph>& into = merged[behind == ours.clusters.begin() ? start : std::prev(behind)->first];
        // From right to left, what is later in the text stands before.
        const bool isBefore = !into.empty() && glyphs.front().pen < into.front().pen;
        into.insert(isBefore ? into.begin() : into.end(), glyphs.begin(), glyphs.end());
    }
    theirs.clusters = std::move(merged);
}

std::string difference(const Line& ours, const Line& theirs, float baseline) {
    std::ostringstream text;
    if (std::abs(ours.width - theirs.width) > kTolerance)
        text << "width " << ours.width << " / " << theirs.width << "; ";
    std::set<uint32_t> starts;
    for (const auto& [start, glyphs] : ours.clusters) starts.insert(start);
    for (const auto& [start, glyphs] : theirs.clusters) starts.insert(start);
    for (const uint32_t start : starts) {
        const auto a = ours.clusters.find(start), b = theirs.clusters.find(start);
        if (a == ours.clusters.end() || b == theirs.clusters.end()) {
            text << "cluster " << start << " only in " << (a == ours.clusters.end() ? "Pango" : "ours") << "; ";
            continue;
        }
        const bool areEqual = std::ranges::equal(a->second, b->second, [&](const Glyph& x, const Glyph& y) {
            return x.glyph == y.glyph && std::abs(x.x - y.x) <= kTolerance &&
                   std::abs(x.y - baseline - y.y) <= kTolerance;
        });
        if (areEqual) continue;
        text << "cluster " << start << ":";
        for (const Glyph& glyph : a->second) text << ' ' << glyph.glyph << '@' << glyph.x << ',' << glyph.y - baseline;
        text << " /";
        for (const Glyph& glyph : b->second) text << ' ' << glyph.glyph << '@' << glyph.x << ',' << glyph.y;
        text << "; ";
    }
    return text.str();
}

/// Of a line in which nothing is raised.
float baselineOf(const NSAttributedString& text) {
    float ascender = 0;
    for (uint32_t i = 0; i < text.length(); ++i) {
        ascender =
            std::max(ascender, text.attributesAtIndex(i)->objectForKey<NSFont>(*NSFontAttributeName)->ascender());
    }
    return ascender;
}

TEST(PangoComparison, sameGlyphsInTheSamePlaces) {
    Pango pango;
    for (const ScriptSample& sample : scriptSamples()) {
        const TextSystem system(*sample.attributedText());
        const Line ours = lineOfLayout(system);
        Line theirs = pango.layOut(sample.text, *system.storage);
        mergeClusters(theirs, ours);
        EXPECT_EQ(difference(ours, theirs, baselineOf(*system.storage)), "")
            << "ours / Pango's, line " << sample.line << ", " << sample.script << ": " << sample.text;
    }
}

}  // namespace
}  // namespace qz
