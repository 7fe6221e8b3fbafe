#include "platform/text/FontFace.h"

#include <algorithm>
#include <atomic>
#include <bitset>
#include <cmath>
#include <mutex>
#include <new>
#include <unordered_map>
#include <unordered_set>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H
#include <hb-ot.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "platform/text/ColourGlyphs.h"
#include "platform/text/FontSynthesis.h"
#include "platform/text/GlyphOutline.h"
#include "platform/text/TextCoverage.h"

namespace qz {
namespace {

// Points to the right for each point above the baseline, 12 degrees.
constexpr float kSyntheticSlant = 0.2126f;
// Stems grow by this fraction of the em, half on either side, and horizontals by half as much, as in bold fonts.
constexpr double kSyntheticBold = 1.0 / 24;
// Default rules, and the greatest plausible thickness of a rule, as fractions of the em.
constexpr double kUnderlineTop = -0.1, kStrikeThroughTop = 0.28, kRuleThickness = 0.05, kRuleThicknessMax = 0.25;

std::span<const uint8_t> bytesOf(hb_blob_t* file) {
    unsigned int size = 0;
    const char* const bytes = hb_blob_get_data(file, &size);
    return {reinterpret_cast<const uint8_t*>(bytes), size};
}

}  // namespace

// The FreeType font. Every face has its own FreeType library, since a shared one would need a lock whenever any face is
// opened or closed.
class FontFace::OutlineSource {
public:
    ~OutlineSource() {
        if (library_) FT_Done_FreeType(library_);
    }

    bool open(hb_blob_t* file, int index, FontSynthesis synthesis) {
        synthesis_ = synthesis;
        const std::span<const uint8_t> bytes = bytesOf(file);
        return succeeded(FT_Init_FreeType(&library_)) &&
               succeeded(
                   FT_New_Memory_Face(library_, bytes.data(), static_cast<FT_Long>(bytes.size()), index, &face_)) &&
               FT_IS_SFNT(face_) && (FT_IS_SCALABLE(face_) || FT_HAS_COLOR(face_));
    }

    FT_Face face() const { return face_; }

    std::shared_ptr<const NSBezierPath> outline(NSGlyph glyph, const ColourGlyphs* colourGlyphs) {
        const std::lock_guard lock(mutex_);
        if (const auto found = outlines_.find(glyph); found != outlines_.end()) return found->second;
        auto path = std::make_shared<const NSBezierPath>(load(glyph, colourGlyphs));
        const size_t size = path->points().size() + kPointsPerEntry;
        if (pointsHeld_ + size > kPointsHeldMax) {
            outlines_.clear();
            pointsHeld_ = 0;
        }
        outlines_.emplace(glyph, path);
        pointsHeld_ += size;
        return path;
    }

    /// Whether some glyph could not be read.
    bool hasDamage() const { return hasDamage_; }
    bool isDamaged(NSGlyph glyph) {
        const std::lock_guard lock(mutex_);
        return damaged_.contains(glyph);
    }
    /// Returns true to the first caller after a glyph could not be read.
    bool mustReportDamage() { return hasDamage_ && !isDamageReported_.exchange(true); }

private:
    static constexpr size_t kPointsHeldMax = 1 << 18;  // 4 MiB
    static constexpr size_t kPointsPerEntry = 16;      // the overhead of an entry, as a number of points

    NSBezierPath load(NSGlyph glyph, const ColourGlyphs* colourGlyphs) {
        if (colourGlyphs && colourGlyphs->hasGlyph(glyph)) return colourGlyphs->silhouette(glyph);
        if (!FT_IS_SCALABLE(face_)) return {};
        constexpr FT_Int32 flags = FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;
        if (!succeeded(FT_Load_Glyph(face_, glyph, flags))) {
            damaged_.insert(glyph);
            hasDamage_ = true;
            return {};
        }
        if (face_->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return {};
        FT_Outline& outline = face_->glyph->outline;
        if (synthesis_.bold) embolden(outline);
        NSBezierPath path = pathOfOutline(outline);
        if (synthesis_.italic) path.transformUsingAffineTransform({.m21 = kSyntheticSlant});
        return path;
    }

    void embolden(FT_Outline& outline) const {
        const auto growth = static_cast<FT_Pos>(std::lround(kSyntheticBold * face_->units_per_EM));
        // This keeps the left and lower sides in place.
        if (succeeded(FT_Outline_EmboldenXY(&outline, growth, growth / 2))) {
            FT_Outline_Translate(&outline, -growth / 2, -growth / 4);
        }
    }

    std::mutex mutex_;
    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    FontSynthesis synthesis_;
    std::unordered_map<NSGlyph, std::shared_ptr<const NSBezierPath>> outlines_;
    size_t pointsHeld_ = 0;
    std::unordered_set<NSGlyph> damaged_;
    std::atomic<bool> hasDamage_ = false;
    std::atomic<bool> isDamageReported_ = false;
};

FontFace::FontFace(const InstalledFont& font, FontSynthesis synthesis, HarfBuzzRef<hb_blob_t> file)
    : installedFont_(font), synthesis_(synthesis), file_(std::move(file)), metrics_{800, -200, 0} {
    const auto faceNumber = static_cast<unsigned int>(font.index) & 0xFFFF;
    const auto instance = static_cast<unsigned int>(font.index) >> 16;
    const HarfBuzzRef<hb_face_t> tables(hb_face_create(file_.get(), faceNumber));
    if (tables.get() == hb_face_get_empty()) throw std::bad_alloc();

    auto outlines = std::make_unique<OutlineSource>();
    const bool isOpen = outlines->open(file_.get(), font.index, synthesis) && hb_face_get_glyph_count(tables.get()) > 0;
    if (isOpen) {
        outlines_ = std::move(outlines);
        glyphCount_ = hb_face_get_glyph_count(tables.get());
        // The two libraries disagree if the header's value is out of range, but outlines and advances must share one
        // scale.
        if (const FT_UShort units = outlines_->face()->units_per_EM; units > 0) hb_face_set_upem(tables.get(), units);
        unitsPerEm_ = hb_face_get_upem(tables.get());
        metrics_ = readMetrics();
        hasColourGlyphs_ = FT_HAS_COLOR(outlines_->face()) || hb_ot_color_has_png(tables.get()) ||
                           hb_ot_color_has_layers(tables.get()) || hb_ot_color_has_svg(tables.get());
    }
    if (hasColourGlyphs_) colourGlyphs_ = std::make_unique<ColourGlyphs>(bytesOf(file_.get()), font.index, unitsPerEm_);
    hb_face_make_immutable(tables.get());
    shaper_.reset(hb_font_create(tables.get()));
    if (shaper_.get() == hb_font_get_empty()) throw std::bad_alloc();
    if (instance > 0) hb_font_set_var_named_instance(shaper_.get(), instance - 1);
    // Marks placed higher lean as much as the letters.
    if (synthesis.italic) hb_font_set_synthetic_slant(shaper_.get(), kSyntheticSlant);
    hb_font_make_immutable(shaper_.get());
}

FontFace::~FontFace() = default;

std::shared_ptr<const FontFace> FontFace::open(const InstalledFont& font, FontSynthesis synthesis) {
    HarfBuzzRef<hb_blob_t> file(hb_blob_create_from_file_or_fail(font.path.c_str()));
    if (!file) return {};
    std::shared_ptr<const FontFace> face(new FontFace(font, synthesis, std::move(file)));
    return face->outlines_ && face->showsLetters() ? face : nullptr;
}

std::shared_ptr<const FontFace> FontFace::withoutGlyphs() {
    return std::shared_ptr<const FontFace>(new FontFace({}, {}, HarfBuzzRef<hb_blob_t>(hb_blob_get_empty())));
}

FontFace::Metrics FontFace::readMetrics() const {
    constexpr FT_UShort kUseTypoMetrics = 1 << 7;
    const FT_Face face = outlines_->face();
    const auto* const os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    const auto* const hhea = static_cast<const TT_HoriHeader*>(FT_Get_Sfnt_Table(face, FT_SFNT_HHEA));
    // FreeType marks a missing table with version 0xFFFF.
    const bool hasOs2 = os2 && os2->version != 0xFFFF;

    double ascender = 0.8 * unitsPerEm_;
    double descender = -0.2 * unitsPerEm_;
    double lineGap = 0;
    if (hasOs2 && (os2->fsSelection & kUseTypoMetrics) && (os2->sTypoAscender != 0 || os2->sTypoDescender != 0)) {
        ascender = os2->sTypoAscender;
        descender = os2->sTypoDescender;
        lineGap = os2->sTypoLineGap;
    } else if (hhea && (hhea->Ascender != 0 || hhea->Descender != 0)) {
        ascender = hhea->Ascender;
        descender = hhea->Descender;
        lineGap = hhea->Line_Gap;
    } else if (hasOs2 && (os2->usWinAscent != 0 || os2->usWinDescent != 0)) {
        ascender = os2->usWinAscent;
        descender = -static_cast<double>(os2->usWinDescent);
    }
    // Some fonts store the descent without its sign.
    return {ascender, -std::abs(descender), std::max(lineGap, 0.0)};
}

FontFace::Rule FontFace::rule(unsigned int topTag, unsigned int thicknessTag, Rule otherwise) const {
    hb_position_t top = 0, thickness = 0;
    hb_ot_metrics_get_position(shaper_.get(), static_cast<hb_ot_metrics_tag_t>(topTag), &top);
    hb_ot_metrics_get_position(shaper_.get(), static_cast<hb_ot_metrics_tag_t>(thicknessTag), &thickness);
    const bool isThickness = thickness > 0 && thickness <= kRuleThicknessMax * unitsPerEm_;
    // A position on the wrong side of the baseline, or farther from it than letters reach, is invalid.
    const bool isTop = top != 0 && (top < 0) == (otherwise.top < 0) && std::abs(top) < unitsPerEm_;
    return {isTop ? top : otherwise.top * unitsPerEm_, isThickness ? thickness : otherwise.thickness * unitsPerEm_};
}

FontFace::Rule FontFace::underline() const {
    return rule(HB_OT_METRICS_TAG_UNDERLINE_OFFSET, HB_OT_METRICS_TAG_UNDERLINE_SIZE, {kUnderlineTop, kRuleThickness});
}

FontFace::Rule FontFace::strikeThrough() const {
    return rule(HB_OT_METRICS_TAG_STRIKEOUT_OFFSET, HB_OT_METRICS_TAG_STRIKEOUT_SIZE,
                {kStrikeThroughTop, kRuleThickness});
}

NSGlyph FontFace::glyphForCharacter(char32_t character) const {
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(shaper_.get(), character, &glyph) ? glyph : 0;
}

double FontFace::advanceOfGlyph(NSGlyph glyph) const {
    return glyph < glyphCount_ ? hb_font_get_glyph_h_advance(shaper_.get(), glyph) : 0;
}

std::shared_ptr<const NSBezierPath> FontFace::outlineOfGlyph(NSGlyph glyph) const {
    static const auto empty = std::make_shared<const NSBezierPath>();
    return glyph < glyphCount_ ? outlines_->outline(glyph, colourGlyphs_.get()) : empty;
}

bool FontFace::isGlyphDamaged(NSGlyph glyph) const {
    if (glyph >= glyphCount_) return false;
    outlines_->outline(glyph, colourGlyphs_.get());
    if (!outlines_->hasDamage()) return false;
    // Outside the outlines' lock, since a log hook may request an outline.
    if (outlines_->mustReportDamage()) {
        NSLog("%@: glyph %i of \"%@\" is damaged, and others may be; other fonts are used, so reinstall the font\n",
              {installedFont_.path, static_cast<int32_t>(glyph), installedFont_.fontName});
    }
    return outlines_->isDamaged(glyph);
}

bool FontFace::canShow(char32_t character) const {
    const NSGlyph glyph = glyphForCharacter(character);
    // Once one glyph is known to be damaged, check each glyph before relying on it.
    return glyph != 0 && !(outlines_->hasDamage() && isGlyphDamaged(glyph));
}

void FontFace::checkGlyphs(std::u16string_view text) const {
    // A long text repeats few characters.
    std::bitset<0x10000> isChecked;
    for (size_t i = 0; i < text.size();) {
        const char32_t character = nextCharacter(text, i);
        if (character < isChecked.size()) {
            if (isChecked[character]) continue;
            isChecked.set(character);
        }
        isGlyphDamaged(glyphForCharacter(character));
    }
}

bool FontFace::showsLetters() const {
    if (hasColourGlyphs_ || !FT_IS_SCALABLE(outlines_->face())) return true;
    // Letters of the most common scripts; fonts with none of them are not checked.
    constexpr std::u32string_view kLetters = U"AHeno\u0414\u03A9\u05D0\u0627\u0915\u0E01\u3042\u4E00\uAC00";
    bool hasLetters = false;
    for (const char32_t letter : kLetters) {
        const NSGlyph glyph = glyphForCharacter(letter);
        if (glyph == 0) continue;
        hasLetters = true;
        if (!outlines_->outline(glyph, colourGlyphs_.get())->isEmpty()) return true;
    }
    return !hasLetters;
}

bool FontFace::coversText(std::u16string_view text) const {
    return isTextCovered(
        text, [this](char32_t character) { return canShow(character); }, hasColourGlyphs_);
}

}  // namespace qz
