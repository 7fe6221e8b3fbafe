#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "platform/text/GlyphDrawing.h"
#include "platform/text/TextCoverage.h"
#include "platform/text/TextRules.h"

namespace qz {
namespace {

// Points by which ink may cross the edge of a picture without being reported: less leaves no visible flat side.
constexpr float kUnseenCut = 0.25f;

using Clipping = RenderReport::Clipping;

std::string utf8(std::u16string_view text) {
    return NSString::stringWithCharacters(std::u16string(text))->utf8();
}

void append(std::vector<Range>& ranges, Range range) {
    if (!ranges.empty() && ranges.back().end() >= range.location) {
        const uint64_t end = std::max(ranges.back().end(), range.end());
        ranges.back().length = static_cast<uint32_t>(end - ranges.back().location);
    } else {
        ranges.push_back(range);
    }
}

/// Collects the font substitutions of a text, run by run.
class SubstitutionFinder {
public:
    SubstitutionFinder(std::u16string_view text, NSFont::Library library) : text_(text), library_(std::move(library)) {}

    void addRun(const NSDictionary& attributes, Range range) {
        const auto serving = attributes.objectForKey<NSFont>(*NSFontAttributeName);
        if (!serving) return;
        const auto original = attributes.objectForKey<NSFont>(*NSOriginalFontAttributeName);
        const Ref<NSString> named = fontNameAskedFor(attributes);
        const bool isMissing = named && isFontMissing(*named);
        // Another face of the same family, with synthesised traits, is reported as a missing trait.
        const bool isSister = original && areEqual(original->familyName(), serving->familyName());
        if (!isMissing && (!original || (isSister && !serving->traits().isEmpty()))) return;
        const std::string asked = (named ? named : (original ? original : serving)->fontName())->utf8();
        const Found found = entryFor(asked, serving->fontName()->utf8(), isMissing);
        append(found.substitution->ranges, range);
        addCharacters(found, text_.substr(range.location, range.length));
    }

    std::vector<RenderReport::Substitution> substitutions() && { return std::move(substitutions_); }

private:
    struct Found {
        RenderReport::Substitution* substitution;
        std::set<char32_t>* seen;
    };

    bool isFontMissing(const NSString& name) {
        const auto [known, isNew] = isMissing_.try_emplace(name.utf8());
        if (isNew) known->second = !NSFont::fontWithName(name, 0, library_);
        return known->second;
    }

    Found entryFor(const std::string& asked, const std::string& served, bool isMissing) {
        auto same = [&](const auto& s) { return s.fontAskedFor == asked && s.fontThatServed == served; };
        const auto found = std::ranges::find_if(substitutions_, same);
        const auto index = static_cast<size_t>(found - substitutions_.begin());
        if (found == substitutions_.end()) {
            substitutions_.push_back({asked, served, isMissing, {}, {}});
            seen_.emplace_back();
        }
        return {&substitutions_[index], &seen_[index]};
    }

    static void addCharacters(const Found& found, std::u16string_view text) {
        for (size_t i = 0; i < text.size();) {
            const size_t start = i;
            const char32_t character = nextCharacter(text, i);
            if (isLayoutControl(character) || !found.seen->insert(character).second) continue;
            found.substitution->characters += utf8(text.substr(start, i - start));
        }
    }

    const std::u16string_view text_;
    const NSFont::Library library_;
    std::vector<RenderReport::Substitution> substitutions_;
    std::vector<std::set<char32_t>> seen_;  // one per substitution
    std::map<std::string, bool> isMissing_;
};

void addMissing(std::vector<RenderReport::MissingGlyph>& missing, const std::string& character, const NSFont& font,
                Range range) {
    const std::string name = font.fontName()->utf8();
    auto same = [&](const auto& m) { return m.character == character && m.font == name; };
    auto found = std::ranges::find_if(missing, same);
    if (found == missing.end()) found = missing.insert(missing.end(), {character, name, {}});
    append(found->ranges, range);
}

/// Adds the characters of a cluster without a glyph in the font; if each has a glyph but they cannot be shown together,
/// the first one.
void addMissingOfCluster(std::vector<RenderReport::MissingGlyph>& missing, std::u16string_view text, Range cluster,
                         const NSFont& font) {
    const std::u16string_view characters = text.substr(cluster.location, cluster.length);
    bool isAnyMissing = false;
    for (size_t i = 0; i < characters.size();) {
        const size_t start = i;
        const char32_t character = nextCharacter(characters, i);
        const std::u16string_view alone = characters.substr(start, i - start);
        if (font.glyphForCharacter(character) != 0 || font.coversText(alone)) continue;
        isAnyMissing = true;
        addMissing(missing, utf8(alone), font,
                   {cluster.location + static_cast<uint32_t>(start), static_cast<uint32_t>(alone.size())});
    }
    if (isAnyMissing) return;
    size_t end = 0;
    nextCharacter(characters, end);
    addMissing(missing, utf8(characters.substr(0, end)), font, {cluster.location, static_cast<uint32_t>(end)});
}

void addMissingTraits(std::vector<RenderReport::MissingTrait>& missing, const NSDictionary& attributes, Range range) {
    using Trait = RenderReport::MissingTrait::Trait;
    const auto font = attributes.objectForKey<NSFont>(*NSFontAttributeName);
    if (!font || font->traits().isEmpty()) return;
    const auto add = [&](Trait trait) {
        const std::string name = font->fontName()->utf8();
        auto same = [&](const auto& m) { return m.trait == trait && m.font == name; };
        auto found = std::ranges::find_if(missing, same);
        if (found == missing.end()) found = missing.insert(missing.end(), {trait, name, {}});
        append(found->ranges, range);
    };
    const FontTraits unmet = font->unmetTraits();
    if (unmet.bold) add(*unmet.bold ? Trait::bold : Trait::regular);
    if (unmet.italic) add(*unmet.italic ? Trait::italic : Trait::upright);
}

/// The distance of ink beyond the outlines of the glyphs, in points.
struct Reach {
    float left, right, top, bottom;
};

/// No value for a layer that is not drawn.
std::optional<Reach> reachOf(const Layer& layer) {
    if (!layer.isVisible()) return {};
    const float half = std::max(static_cast<float>(layer.width), 0.0f) / 2;
    return Reach{half - layer.offset.x, half + layer.offset.x, half - layer.offset.y, half + layer.offset.y};
}

/// How a run is drawn.
struct DrawnRun {
    uint64_t end = 0;
    Ref<NSFont> font;
    float obliqueness = 0;
    /// For the glyphs, then for the layers beneath them.
    std::vector<std::optional<Reach>> reaches;
};

DrawnRun drawnRunAt(const NSAttributedString& text, uint32_t character) {
    Range run;
    const TitleStyle style = titleStyleOf(*text.attributesAtIndex(character, &run));
    DrawnRun drawn = {run.end(), style.font, static_cast<float>(style.slant), {Reach{}}};
    for (const Layer& layer : style.layers) drawn.reaches.push_back(reachOf(layer));
    return drawn;
}

/// Finds the glyphs that extend beyond a picture.
class EdgeCheck {
public:
    explicit EdgeCheck(NSSize picture) : picture_(picture) {}

    void addGlyph(const GlyphAtPlace& place, const DrawnRun& run, Range cluster) {
        // A box of control points is fast to compute, but may be larger than the ink.
        const NSRect box = boxOf(place);
        if (NSIsEmptyRect(box) || !isAnyCut(box, run)) return;
        addInk(outlineOfGlyph(place).bezierPathByFlatteningPath().controlPointBounds(), run, cluster);
    }

    /// Adds the ink of letters, or of a rule under or through them.
    void addInk(const NSRect& ink, const DrawnRun& run, Range characters) {
        cut_.resize(run.reaches.size());
        for (size_t i = 0; i < run.reaches.size(); ++i) {
            if (!isCut(ink, run.reaches[i])) continue;
            cut_[i].push_back(characters);
            // If the letters themselves are cut, their layers add nothing.
            if (i == 0) break;
        }
    }

    void tell(std::vector<Clipping>& clipped) const {
        for (size_t i = 0; i < cut_.size(); ++i) {
            std::vector<Range> inOrder = cut_[i], ranges;
            std::ranges::sort(inOrder, {}, &Range::location);
            for (const Range range : inOrder) append(ranges, range);
            const Clipping::Part part = i == 0 ? Clipping::Part::glyphs : Clipping::Part::layer;
            for (const Range range : ranges) clipped.push_back({part, range, static_cast<uint32_t>(i)});
        }
    }

private:
    static NSRect boxOf(const GlyphAtPlace& place) {
        const NSRect box = place.font->boundingRectForGlyph(place.glyph);
        const float slantAtBottom = place.obliqueness * box.origin.y;
        const float slantAtTop = place.obliqueness * box.maxY();
        return {{place.origin.x + box.origin.x + std::min(slantAtBottom, slantAtTop), place.origin.y - box.maxY()},
                {box.size.width + std::abs(slantAtTop - slantAtBottom), box.size.height}};
    }

    bool isCut(const NSRect& ink, const std::optional<Reach>& reach) const { return reach && isBeyond(ink, *reach); }

    bool isAnyCut(const NSRect& ink, const DrawnRun& run) const {
        return std::ranges::any_of(run.reaches, [&](const auto& reach) { return isCut(ink, reach); });
    }

    bool isBeyond(const NSRect& ink, const Reach& reach) const {
        return ink.origin.x - reach.left < -kUnseenCut || ink.origin.y - reach.top < -kUnseenCut ||
               ink.maxX() + reach.right > picture_.width + kUnseenCut ||
               ink.maxY() + reach.bottom > picture_.height + kUnseenCut;
    }

    const NSSize picture_;
    std::vector<std::vector<Range>> cut_;  // for the glyphs, then for the layers
};

bool showsNothing(std::u16string_view text) {
    constexpr std::u16string_view kBlanks = u" \u00A0\u3000";
    const auto isBlank = [&](char16_t unit) { return kBlanks.find(unit) != kBlanks.npos || isLayoutControl(unit); };
    return std::ranges::all_of(text, isBlank);
}

}  // namespace

RenderReport QzAnnoStringToScreen::reportInFullScreen(bool fullScreen) {
    NSPoint offset;
    const NSRect place = placeInFullScreen(fullScreen, offset);
    const Ref<QzAnnoPalette> palette = palette_.lock();
    RenderReport report;
    const std::u16string_view text = textStorage_->characters();

    SubstitutionFinder substitutions(text, palette ? palette->fontLibrary() : nullptr);
    for (Range run; run.end() < text.size();) {
        const auto position = static_cast<uint32_t>(run.end());
        const Ref<NSDictionary> attributes = textStorage_->attributesAtIndex(position, &run);
        substitutions.addRun(*attributes, run);
        addMissingTraits(report.missingTraits, *attributes, run);
    }
    report.substitutions = std::move(substitutions).substitutions();

    const Range glyphs = layoutManager_->glyphRangeForTextContainer(*textContainer_);
    const uint64_t laidOutEnd = glyphs.length > 0 ? layoutManager_->characterRangeForGlyphRange(glyphs).end() : 0;
    if (laidOutEnd < text.size() && !showsNothing(text.substr(laidOutEnd))) {
        report.clipped.push_back(
            {Clipping::Part::text,
             {static_cast<uint32_t>(laidOutEnd), static_cast<uint32_t>(text.size() - laidOutEnd)}});
    }

    EdgeCheck edges(place.size);
    DrawnRun run;
    for (uint64_t i = glyphs.location; i < glyphs.end(); ++i) {
        const auto glyph = static_cast<uint32_t>(i);
        if (layoutManager_->notShownAttributeForGlyphAtIndex(glyph)) continue;
        const Range cluster = layoutManager_->characterRangeForGlyphRange({glyph, 1});
        if (cluster.location >= run.end) run = drawnRunAt(*textStorage_, cluster.location);
        if (!run.font) continue;
        const NSGlyph number = layoutManager_->glyphAtIndex(glyph);
        if (number == 0 || run.font->isGlyphDamaged(number)) {
            addMissingOfCluster(report.missingGlyphs, text, cluster, *run.font);
        }
        edges.addGlyph({number, run.font, originOfGlyph(glyph, offset), run.obliqueness}, run, cluster);
    }
    for (const TextRule& rule : layoutManager_->textRulesForGlyphRange(glyphs, offset))
        edges.addInk(rule.rect, drawnRunAt(*textStorage_, rule.characters.location), rule.characters);
    edges.tell(report.clipped);
    return report;
}

NSPoint QzAnnoStringToScreen::originOfGlyph(uint32_t glyph, NSPoint offset) const {
    const NSRect line = layoutManager_->lineFragmentRectForGlyphAtIndex(glyph);
    const NSPoint location = layoutManager_->locationForGlyphAtIndex(glyph);
    return {offset.x + line.origin.x + location.x, offset.y + line.origin.y + location.y};
}

}  // namespace qz
