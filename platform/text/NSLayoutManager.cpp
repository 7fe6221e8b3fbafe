#include "QzAnno/platform/text/NSLayoutManager.h"

#include <algorithm>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/text/FontFixing.h"
#include "platform/text/GlyphDrawing.h"
#include "platform/text/RunAppearance.h"
#include "platform/text/TemporaryAttributes.h"
#include "platform/text/TextLayout.h"
#include "platform/text/TextRules.h"

namespace qz {

NSLayoutManager::NSLayoutManager()
    : layout_(std::make_unique<TextLayout>()),
      temporaryAttributes_(std::make_unique<TemporaryAttributes>()),
      glyphCache_(GlyphCache::init()) {}

NSLayoutManager::~NSLayoutManager() = default;

Ref<NSLayoutManager> NSLayoutManager::init() {
    return Ref<NSLayoutManager>(new NSLayoutManager());
}

TextRuleKinds NSLayoutManager::ruleKinds(const NSDictionary&) const {
    return {};
}

void NSLayoutManager::setGlyphCache(const Ref<GlyphCache>& cache) {
    glyphCache_ = cache ? cache : GlyphCache::init();
}

// The text system

Ref<NSTextStorage> NSLayoutManager::textStorage() const {
    return layout_->storage();
}

void NSLayoutManager::setTextStorage(const Ref<NSTextStorage>& textStorage) {
    layout_->setStorage(textStorage);
}

void NSLayoutManager::replaceTextStorage(const Ref<NSTextStorage>& textStorage) {
    const auto self = refTo(*this);
    const Ref<NSTextStorage> former = this->textStorage();
    if (former == textStorage) return;
    if (former) former->removeLayoutManager(*this);
    if (textStorage) textStorage->addLayoutManager(self);
}

void NSLayoutManager::addTextContainer(const Ref<NSTextContainer>& container) {
    if (!container || container->layoutManager().get() == this) return;
    if (const Ref<NSLayoutManager> former = container->layoutManager()) former->removeTextContainer(*container);
    container->layoutManager_ = refTo(*this);
    layout_->addContainer(container);
}

void NSLayoutManager::removeTextContainer(const NSTextContainer& container) {
    if (const Ref<NSTextContainer> removed = layout_->removeContainer(container)) removed->layoutManager_.reset();
}

void NSLayoutManager::textContainerChangedGeometry(const NSTextContainer& container) {
    layout_->containerChanged(container);
}

void NSLayoutManager::textStorageEdited(Range editedRange, int64_t changeInLength, bool charactersChanged) {
    if (!textStorage()) {
        layout_->forgetText();
        *temporaryAttributes_ = {};
        return;
    }
    layout_->textEdited(editedRange, changeInLength);
    if (charactersChanged) temporaryAttributes_->textEdited(editedRange, changeInLength);
}

// Containers and lines

uint32_t NSLayoutManager::numberOfGlyphs() const {
    return layout_->glyphCount();
}

uint32_t NSLayoutManager::firstUnlaidGlyphIndex() const {
    return layout_->firstUnlaidGlyph();
}

Ref<NSTextContainer> NSLayoutManager::textContainerForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange) const {
    const TextLayout::Line* line = layout_->lineOfGlyph(glyphIndex);
    if (!line) return {};
    const Ref<NSTextContainer> container = layout_->containers()[line->container];
    if (effectiveRange) *effectiveRange = glyphRangeForTextContainer(*container);
    return container;
}

Range NSLayoutManager::glyphRangeForTextContainer(const NSTextContainer& container) const {
    const std::span<const TextLayout::Line> lines = layout_->linesOfContainer(container);
    if (lines.empty()) return {};
    const uint32_t start = lines.front().glyphs.location;
    return {start, static_cast<uint32_t>(lines.back().glyphs.end()) - start};
}

NSRect NSLayoutManager::usedRectForTextContainer(const NSTextContainer& container) const {
    return layout_->usedRectOfContainer(container);
}

NSRect NSLayoutManager::extraLineFragmentUsedRectForTextContainer(const NSTextContainer& container) const {
    return layout_->extraLineUsedRectOfContainer(container);
}

NSRect NSLayoutManager::lineFragmentRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange) const {
    const TextLayout::Line* line = layout_->lineOfGlyph(glyphIndex);
    if (line && effectiveRange) *effectiveRange = line->glyphs;
    return line ? line->fragment : NSRect();
}

NSRect NSLayoutManager::lineFragmentUsedRectForGlyphAtIndex(uint32_t glyphIndex, Range* effectiveRange) const {
    const TextLayout::Line* line = layout_->lineOfGlyph(glyphIndex);
    if (line && effectiveRange) *effectiveRange = line->glyphs;
    return line ? line->usedRect : NSRect();
}

std::vector<CaretCell> NSLayoutManager::caretCellsForLineOfGlyphAtIndex(uint32_t glyphIndex) const {
    const TextLayout::Line* line = layout_->lineOfGlyph(glyphIndex);
    return line ? layout_->caretCells(*line) : std::vector<CaretCell>();
}

bool NSLayoutManager::isRightToLeftParagraphOfGlyphAtIndex(uint32_t glyphIndex) const {
    const TextLayout::Line* line = layout_->lineOfGlyph(glyphIndex);
    return line && layout_->isRightToLeftParagraph(*line);
}

// Glyphs and characters

Range NSLayoutManager::characterRangeForGlyphRange(Range glyphRange, Range* actualGlyphRange) const {
    return layout_->charactersOfGlyphs(glyphRange, actualGlyphRange);
}

Range NSLayoutManager::glyphRangeForCharacterRange(Range characterRange, Range* actualCharacterRange) const {
    return layout_->glyphsOfCharacters(characterRange, actualCharacterRange);
}

uint32_t NSLayoutManager::characterIndexForGlyphAtIndex(uint32_t glyphIndex) const {
    if (const PlacedGlyph* glyph = layout_->glyph(glyphIndex)) return glyph->character;
    const Ref<NSTextStorage> text = textStorage();
    return text ? text->length() : 0;
}

NSGlyph NSLayoutManager::glyphAtIndex(uint32_t glyphIndex) const {
    const PlacedGlyph* glyph = layout_->glyph(glyphIndex);
    return glyph ? glyph->glyph : NSControlGlyph;
}

bool NSLayoutManager::notShownAttributeForGlyphAtIndex(uint32_t glyphIndex) const {
    const PlacedGlyph* glyph = layout_->glyph(glyphIndex);
    return !glyph || glyph->isNotShown;
}

NSPoint NSLayoutManager::locationForGlyphAtIndex(uint32_t glyphIndex) const {
    const PlacedGlyph* glyph = layout_->glyph(glyphIndex);
    return glyph ? glyph->location : NSPoint();
}

float NSLayoutManager::advanceForGlyphAtIndex(uint32_t glyphIndex) const {
    const PlacedGlyph* glyph = layout_->glyph(glyphIndex);
    return glyph ? glyph->advance : 0;
}

bool NSLayoutManager::isRightToLeftGlyphAtIndex(uint32_t glyphIndex) const {
    const PlacedGlyph* glyph = layout_->glyph(glyphIndex);
    return glyph && glyph->isRightToLeft;
}

// Drawing

void NSLayoutManager::addTemporaryAttributes(const NSDictionary& attributes, Range forCharacterRange) {
    temporaryAttributes_->add(attributes, forCharacterRange);
}

void NSLayoutManager::removeTemporaryAttribute(const NSString& name, Range forCharacterRange) {
    temporaryAttributes_->remove(name, forCharacterRange);
}

Ref<NSDictionary> NSLayoutManager::temporaryAttributesAtCharacterIndex(uint32_t index, Range* effectiveRange) const {
    const Ref<NSTextStorage> text = textStorage();
    if (!text || index >= text->length()) return {};
    Range range;
    Ref<NSDictionary> attributes = temporaryAttributes_->attributesAtIndex(index, &range);
    if (effectiveRange) *effectiveRange = intersection(range, {0, text->length()});
    return attributes;
}

NSLayoutManager::RunAppearance NSLayoutManager::appearanceAt(const NSTextStorage& text, uint32_t character) const {
    Range range, temporaryRange;
    const Ref<NSDictionary> attributes = text.attributesAtIndex(character, &range);
    const Ref<NSDictionary> temporary = temporaryAttributes_->attributesAtIndex(character, &temporaryRange);
    RunAppearance run{.characters = intersection(range, temporaryRange),
                      .font = attributes->objectForKey<NSFont>(*NSFontAttributeName),
                      .color = temporary->objectForKey<NSColor>(*NSForegroundColorAttributeName)};
    if (!run.font) run.font = defaultFont();
    if (usesScreenFonts_) run.font = substituteFontForFont(run.font);
    run.isSilhouette = run.color != nullptr;
    if (!run.color) run.color = attributes->objectForKey<NSColor>(*NSForegroundColorAttributeName);
    if (!run.color) run.color = NSColor::blackColor();
    const Ref<NSNumber> obliqueness = numberFrom(attributes->objectForKey(*NSObliquenessAttributeName));
    if (obliqueness) run.obliqueness = obliqueness->floatValue();
    return run;
}

template <class Visit>
void NSLayoutManager::visitShownGlyphs(Range glyphRange, NSPoint atPoint, const Visit& visit) const {
    if (glyphRange.length == 0) return;
    layout_->glyph(static_cast<uint32_t>(std::min<uint64_t>(glyphRange.end() - 1, UINT32_MAX)));
    const Ref<NSTextStorage> text = layout_->text();
    if (!text) return;

    const auto end = static_cast<uint32_t>(std::min<uint64_t>(glyphRange.end(), layout_->placedGlyphCount()));
    const TextLayout::Line* line = nullptr;
    RunAppearance run;
    for (uint32_t i = glyphRange.location; i < end; ++i) {
        const PlacedGlyph glyph = *layout_->glyph(i);
        if (glyph.isNotShown) continue;
        if (!run.characters.contains(glyph.character)) {
            run = appearanceAt(*text, glyph.character);
            line = nullptr;  // the substitute font is chosen by a subclass, which may have text laid out
        }
        if (!line || !line->glyphs.contains(i)) line = layout_->knownLineOfGlyph(i);
        const NSPoint origin = {atPoint.x + line->fragment.origin.x + glyph.location.x,
                                atPoint.y + line->fragment.origin.y + glyph.location.y};
        visit(GlyphAtPlace{glyph.glyph, run.font, origin, run.obliqueness}, run);
    }
}

std::vector<GlyphAtPlace> NSLayoutManager::shownGlyphs(Range glyphRange, NSPoint atPoint) const {
    std::vector<GlyphAtPlace> glyphs;
    visitShownGlyphs(glyphRange, atPoint,
                     [&](const GlyphAtPlace& glyph, const RunAppearance&) { glyphs.push_back(glyph); });
    return glyphs;
}

void NSLayoutManager::drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint) {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (!context) return;
    const std::optional<Paint> formerPaint = context->paint();
    const std::vector<TextRule> rules = joinedRules(textRulesForGlyphRange(glyphRange, atPoint));
    if (!rules.empty()) {
        drawGlyphsWithRules(*context, glyphRange, atPoint, rules);
        context->setPaint(formerPaint);
        return;
    }
    std::vector<GlyphAtPlace> alike;
    Ref<NSColor> color;
    bool isSilhouette = false;
    const auto drawAlike = [&] {
        const auto draw = isSilhouette ? fillGlyphs : drawGlyphs;
        draw(*context, alike, *glyphCache_);
        alike.clear();
    };
    visitShownGlyphs(glyphRange, atPoint, [&](const GlyphAtPlace& glyph, const RunAppearance& run) {
        if (alike.empty() || color != run.color || isSilhouette != run.isSilhouette) {
            drawAlike();
            color = run.color;
            context->setColor(color);
            isSilhouette = run.isSilhouette;
        }
        alike.push_back(glyph);
    });
    drawAlike();
    context->setPaint(formerPaint);
}

void NSLayoutManager::drawGlyphsWithRules(NSGraphicsContext& context, Range glyphRange, NSPoint atPoint,
                                          const std::vector<TextRule>& rules) const {
    struct Look {
        Ref<NSColor> color;
        bool isSilhouette;
        std::vector<GlyphAtPlace> glyphs;
        std::vector<NSRect> rules;
    };
    std::vector<Look> looks;
    const auto lookOf = [&](const Ref<NSColor>& color, std::optional<bool> isSilhouette) -> Look& {
        const auto found = std::ranges::find_if(looks, [&](const Look& look) {
            return look.isSilhouette == isSilhouette.value_or(look.isSilhouette) && look.color->isEqual(*color);
        });
        if (found != looks.end()) return *found;
        looks.push_back({color, isSilhouette.value_or(false), {}, {}});
        return looks.back();
    };
    visitShownGlyphs(glyphRange, atPoint, [&](const GlyphAtPlace& glyph, const RunAppearance& run) {
        lookOf(run.color, run.isSilhouette).glyphs.push_back(glyph);
    });
    for (const TextRule& rule : rules) lookOf(rule.color, std::nullopt).rules.push_back(rule.rect);
    // Laid down as one, since a translucent colour would show where a rule crosses its letters.
    const bool gathers = !context.isGathering();
    for (const Look& look : looks) {
        context.setColor(look.color);
        if (gathers) context.beginGathering();
        for (const NSRect& rule : look.rules) context.fill(NSBezierPath::bezierPathWithRect(rule));
        const auto draw = look.isSilhouette ? fillGlyphs : drawGlyphs;
        draw(context, look.glyphs, *glyphCache_);
        if (gathers) context.endGathering();
    }
}

}  // namespace qz
