// Pango as a referee: the same lines in the same font files, without hinting, must have the same glyphs in the same
// places.

#include <algorithm>
#include <cmath>
#include <map>
#include <sstream>

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

/// Glyphs are compared in an order that hangs on neither's clusters.
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
