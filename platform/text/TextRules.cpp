#include "platform/text/TextRules.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/text/RunAppearance.h"
#include "platform/text/TextLayout.h"

namespace qz {
namespace {

// The largest gap, in points, between pieces of one rule, since positions have been through 32-bit floats.
constexpr float kTouching = 0.01f;

/// A run of text with the attributes that affect its rules.
struct RuledRun {
    Range characters;
    TextRuleKinds kinds;
    Ref<NSFont> font;  ///< the requested font: a substitute's rules do not count
    Ref<NSColor> color;
    float baselineOffset = 0;
};

/// The part of a line covered by a glyph's advance.
struct Piece {
    float left;
    float right;
    uint32_t glyph;
    size_t run;
};

/// The font of most of the pieces, so that a rule under a line with one word in another face is straight.
const NSFont& prevailingFont(const std::vector<RuledRun>& runs, std::span<const Piece> pieces) {
    std::vector<std::pair<const NSFont*, float>> widths;
    for (const Piece& piece : pieces) {
        const NSFont* const font = runs[piece.run].font.get();
        auto found = std::ranges::find_if(widths, [&](const auto& width) { return width.first->looksLike(*font); });
        if (found == widths.end()) found = widths.insert(widths.end(), {font, 0.0f});
        found->second += piece.right - piece.left;
    }
    return *std::ranges::max_element(widths, {}, [](const auto& width) { return width.second; })->first;
}

}  // namespace

/// Finds the rules of a layout manager's lines.
class NSLayoutManager::RuleFinder {
public:
    RuleFinder(const NSLayoutManager& manager, const NSTextStorage& text, NSPoint atPoint)
        : manager_(manager), layout_(*manager.layout_), text_(text), atPoint_(atPoint) {}

    /// Adds the rules of the line's glyphs in the range. The whole line determines their position, so that they match
    /// however the glyphs are drawn.
    void addRulesOfLine(const TextLayout::Line& line, Range glyphRange) {
        findPieces(line);
        for (const bool TextRuleKinds::*const kind : {&TextRuleKinds::underline, &TextRuleKinds::strikeThrough}) {
            for (size_t first = 0, last = 0; first < pieces_.size(); first = last) {
                last = first + 1;
                const RuledRun& run = runs_[pieces_[first].run];
                if (!(run.kinds.*kind)) continue;
                while (last < pieces_.size() && goesOn(run, runs_[pieces_[last].run], kind)) ++last;
                addRule(line, std::span(pieces_).subspan(first, last - first), kind, glyphRange);
            }
        }
    }

    std::vector<TextRule> rules() && { return std::move(rules_); }

private:
    /// In visual order. White space hanging at the end has no advance and no rule.
    void findPieces(const TextLayout::Line& line) {
        pieces_.clear();
        runs_.clear();
        for (auto i = line.glyphs.location; i < line.glyphs.end(); ++i) {
            // A copy, since choosing the font of a run may lay out text.
            const PlacedGlyph glyph = *layout_.glyph(i);
            if (!(glyph.advance > 0)) continue;
            if (runs_.empty() || !runs_.back().characters.contains(glyph.character))
                runs_.push_back(runAt(line, glyph.character));
            pieces_.push_back({glyph.pen, glyph.pen + glyph.advance, i, runs_.size() - 1});
        }
        std::ranges::stable_sort(pieces_, {}, &Piece::left);
    }

    RuledRun runAt(const TextLayout::Line& line, uint32_t character) const {
        const RunAppearance look = manager_.appearanceAt(text_, character);
        const Ref<NSDictionary> attributes = text_.attributesAtIndex(character);
        const auto asked = attributes->objectForKey<NSFont>(*NSOriginalFontAttributeName);
        return {look.characters, manager_.ruleKinds(*attributes), asked ? asked : look.font, look.color,
                layout_.baselineOffsetAt(line, character)};
    }

    static bool goesOn(const RuledRun& run, const RuledRun& next, const bool TextRuleKinds::*kind) {
        return next.kinds.*kind && next.font->pointSize() == run.font->pointSize() &&
               next.baselineOffset == run.baselineOffset;
    }

    void addRule(const TextLayout::Line& line, std::span<const Piece> pieces, const bool TextRuleKinds::*kind,
                 Range glyphRange) {
        const bool isBelow = kind == &TextRuleKinds::underline;
        const NSFont& font = prevailingFont(runs_, pieces);
        const FontRule shape = isBelow ? font.underline() : font.strikeThrough();
        const float baseline = line.baseline - runs_[pieces.front().run].baselineOffset;
        const float top = atPoint_.y + line.fragment.origin.y + baseline - shape.top;
        const float left = atPoint_.x + line.fragment.origin.x;
        const Piece* before = nullptr;
        for (const Piece& piece : pieces) {
            if (!glyphRange.contains(piece.glyph)) continue;
            const Range characters = layout_.charactersOfGlyph(piece.glyph);
            if (before && before + 1 == &piece && before->run == piece.run) {
                TextRule& rule = rules_.back();
                rule.rect.size.width = left + piece.right - rule.rect.origin.x;
                rule.characters = unionOf(rule.characters, characters);
            } else {
                rules_.push_back({{{left + piece.left, top}, {piece.right - piece.left, shape.thickness}},
                                  isBelow,
                                  runs_[piece.run].color,
                                  characters});
            }
            before = &piece;
        }
    }

    static Range unionOf(Range a, Range b) {
        const uint32_t start = std::min(a.location, b.location);
        return {start, static_cast<uint32_t>(std::max(a.end(), b.end()) - start)};
    }

    const NSLayoutManager& manager_;
    TextLayout& layout_;
    const NSTextStorage& text_;
    const NSPoint atPoint_;
    std::vector<RuledRun> runs_;  // of the line
    std::vector<Piece> pieces_;   // of the line
    std::vector<TextRule> rules_;
};

std::vector<TextRule> NSLayoutManager::textRulesForGlyphRange(Range glyphRange, NSPoint atPoint) const {
    const Range characters = characterRangeForGlyphRange(glyphRange);
    const Ref<NSTextStorage> text = layout_->text();
    if (!text) return {};
    // Most text has no rules, so check the runs first.
    bool hasRules = false;
    for (uint64_t i = characters.location; !hasRules && i < characters.end();) {
        Range run;
        hasRules = !ruleKinds(*text->attributesAtIndex(static_cast<uint32_t>(i), &run)).isEmpty();
        i = run.end();
    }
    if (!hasRules) return {};
    RuleFinder finder(*this, *text, atPoint);
    const uint64_t end = std::min<uint64_t>(glyphRange.end(), layout_->placedGlyphCount());
    for (uint64_t glyph = glyphRange.location; glyph < end;) {
        const TextLayout::Line line = *layout_->knownLineOfGlyph(static_cast<uint32_t>(glyph));
        finder.addRulesOfLine(line, glyphRange);
        glyph = line.glyphs.end();
    }
    return std::move(finder).rules();
}

std::vector<TextRule> joinedRules(const std::vector<TextRule>& rules) {
    std::vector<TextRule> joined;
    for (const TextRule& rule : rules) {
        TextRule* const before = joined.empty() ? nullptr : &joined.back();
        if (before && before->isBelow == rule.isBelow && before->color->isEqual(*rule.color) &&
            before->rect.origin.y == rule.rect.origin.y && before->rect.size.height == rule.rect.size.height &&
            std::abs(before->rect.maxX() - rule.rect.origin.x) < kTouching) {
            before->rect.size.width = rule.rect.maxX() - before->rect.origin.x;
        } else {
            joined.push_back(rule);
        }
    }
    return joined;
}

}  // namespace qz
