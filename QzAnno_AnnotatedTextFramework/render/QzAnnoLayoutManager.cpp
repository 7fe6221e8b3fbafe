#include "QzAnno/render/QzAnnoLayoutManager.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphDrawing.h"
#include "platform/text/TextRules.h"

namespace qz {
namespace {

constexpr int kLayoutPollsMax = 100;
constexpr std::chrono::milliseconds kLayoutPoll{1};

// Below these quality factors outlines have a coarser flatness, in pixels, or simpler joins.
constexpr float kCoarsestBelow = 1.0f / 3;
constexpr float kCoarseBelow = 2.0f / 3;
constexpr float kMitersUpTo = 0.5f;
constexpr float kCoarsestFlatness = 50.0f;
constexpr float kCoarseFlatness = 10.0f;
constexpr float kLayerMiterLimit = 50.0f;

// A layer of repeated glyphs takes (2n + 1)^2 copies; wider layers are drawn with this n.
constexpr int32_t kRepeatsMax = 32;

/// Sets a flag for a scope.
class Raised {
public:
    explicit Raised(bool& flag) : flag_(flag) { flag_ = true; }
    ~Raised() { flag_ = false; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

private:
    bool& flag_;
};

/// Saves the graphics state of a context for a scope.
class SavedGraphicsState {
public:
    explicit SavedGraphicsState(NSGraphicsContext& context) : context_(context) { context_.saveGraphicsState(); }
    ~SavedGraphicsState() { context_.restoreGraphicsState(); }
    SavedGraphicsState(const SavedGraphicsState&) = delete;
    SavedGraphicsState& operator=(const SavedGraphicsState&) = delete;

private:
    NSGraphicsContext& context_;
};

bool contextAntialiases() {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    return context && context->shouldAntialias();
}

}  // namespace

struct QzAnnoLayoutManager::StyledRun {
    Range glyphs;
    std::vector<Layer> layers;
};

struct QzAnnoLayoutManager::LayerRun {
    Range glyphs;
    Layer layer;
};

Ref<QzAnnoLayoutManager> QzAnnoLayoutManager::init() {
    return Ref<QzAnnoLayoutManager>(new QzAnnoLayoutManager);
}

void QzAnnoLayoutManager::setAntialiasing(bool antialiasing) {
    antialiasingMode_ = antialiasing ? on : off;
    setUsesScreenFonts(!antialiasing);
}

Ref<NSFont> QzAnnoLayoutManager::fontAtIndex(uint32_t index) const {
    const Ref<NSTextStorage> storage = textStorage();
    if (!storage || index >= storage->length()) return {};
    const auto font = storage->attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName);
    return font && usesScreenFonts() ? substituteFontForFont(font) : font;
}

TextRuleKinds QzAnnoLayoutManager::ruleKinds(const NSDictionary& attributes) const {
    return {isOn(attributes, *QzUnderlineAttribute), isOn(attributes, *QzStrikeThroughAttribute)};
}

void QzAnnoLayoutManager::drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint) {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    if (!context) return;
    const SavedGraphicsState saved(*context);
    if (antialiasingMode_ != asContext) context->setShouldAntialias(antialiasingMode_ == on);
    if (!drawing_) drawBeneath(glyphRange, static_cast<uint32_t>(layerAttributes().size()), 1, atPoint);
    if (antialiasing()) {
        NSLayoutManager::drawGlyphsForGlyphRange(glyphRange, atPoint);
        return;
    }
    Range character;
    characterRangeForGlyphRange({glyphRange.location, 1}, &character);
    while (character.location < glyphRange.end() && character.length > 0) {
        NSLayoutManager::drawGlyphsForGlyphRange(character, atPoint);
        characterRangeForGlyphRange({static_cast<uint32_t>(character.end()), 1}, &character);
    }
}

void QzAnnoLayoutManager::myDraw(Range glyphRange, uint32_t asBackground, NSPoint atPoint) {
    if (asBackground >= 1 && asBackground <= layerAttributes().size())
        drawBeneath(glyphRange, asBackground, asBackground, atPoint);
}

void QzAnnoLayoutManager::drawBeneath(Range glyphRange, uint32_t fromLayer, uint32_t toLayer, NSPoint origin) {
    const Ref<NSTextStorage> storage = textStorage();
    if (glyphRange.length == 0 || !storage || glyphRange.location >= numberOfGlyphs()) return;
    const Raised drawing(drawing_);
    waitForBackgroundLayout(glyphRange);
    textContainerForGlyphAtIndex(static_cast<uint32_t>(glyphRange.end() - 1));
    if (fromLayer == layerAttributes().size()) drawBoundingBoxes(glyphRange, origin);
    const std::vector<StyledRun> runs = styledRuns(glyphRange);
    for (uint32_t number = fromLayer; number >= toLayer; --number) drawLayer(runs, number, origin);
}

void QzAnnoLayoutManager::waitForBackgroundLayout(Range glyphRange) const {
    for (int poll = 0; poll < kLayoutPollsMax && glyphRange.contains(firstUnlaidGlyphIndex()); ++poll) {
        std::this_thread::sleep_for(kLayoutPoll);
    }
}

void QzAnnoLayoutManager::drawBoundingBoxes(Range glyphRange, NSPoint origin) const {
    const uint32_t character = characterIndexForGlyphAtIndex(glyphRange.location);
    const TextBox box = textBoxOf(*textStorage()->attributesAtIndex(character));
    if (box.form == TextBox::Form::none) return;
    Range held;
    for (uint64_t glyph = glyphRange.location; glyph < glyphRange.end(); glyph = held.end()) {
        const Ref<NSTextContainer> container = textContainerForGlyphAtIndex(static_cast<uint32_t>(glyph), &held);
        if (!container) return;
        const NSRect used = NSOffsetRect(usedRectForTextContainer(*container), origin.x, origin.y);
        const NSBezierPath path = NSBezierPath::bezierPathWithRect(used);
        box.color->set();
        if (box.form == TextBox::Form::outlined)
            path.stroke();
        else
            path.fill();
    }
}

std::vector<QzAnnoLayoutManager::StyledRun> QzAnnoLayoutManager::styledRuns(Range glyphRange) const {
    // Attributes belong to characters: a run contains the glyphs whose first character lies in it, so that a ligature
    // across two runs is drawn once.
    const Ref<NSTextStorage> storage = textStorage();
    const Range characters = characterRangeForGlyphRange(glyphRange);
    const uint64_t glyphsEnd = std::min<uint64_t>(glyphRange.end(), numberOfGlyphs());
    std::vector<StyledRun> runs;
    for (uint64_t glyph = glyphRange.location; glyph < glyphsEnd;) {
        Range run;
        const uint32_t character = characterIndexForGlyphAtIndex(static_cast<uint32_t>(glyph));
        std::vector<Layer> layers = layersOf(*storage->attributesAtIndex(character, &run, characters));
        const auto start = static_cast<uint32_t>(glyph);
        while (glyph < glyphsEnd && characterIndexForGlyphAtIndex(static_cast<uint32_t>(glyph)) < run.end()) ++glyph;
        runs.push_back({{start, static_cast<uint32_t>(glyph - start)}, std::move(layers)});
    }
    return runs;
}

void QzAnnoLayoutManager::drawLayer(const std::vector<StyledRun>& runs, uint32_t number, NSPoint origin) {
    std::vector<LayerRun> drawn;
    for (const StyledRun& run : runs) {
        if (run.layers.at(number - 1).isVisible()) drawn.push_back({run.glyphs, run.layers[number - 1]});
    }
    if (mergesLayers_) return drawMerged(drawn, origin);
    for (const LayerRun& run : drawn) drawRun(run, origin);
}

void QzAnnoLayoutManager::drawMerged(const std::vector<LayerRun>& runs, NSPoint origin) {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    std::vector<Ref<NSColor>> colors;
    for (const LayerRun& run : runs) {
        const auto isItsColor = [&](const Ref<NSColor>& color) { return color->isEqual(*run.layer.color); };
        if (std::ranges::none_of(colors, isItsColor)) colors.push_back(run.layer.color);
    }
    for (const Ref<NSColor>& color : colors) {
        context->beginGathering();
        for (const LayerRun& run : runs) {
            if (color->isEqual(*run.layer.color)) drawRun(run, origin);
        }
        context->setColor(color);
        context->endGathering();
    }
}

void QzAnnoLayoutManager::drawRun(const LayerRun& run, NSPoint origin) {
    if (contextAntialiases() && run.layer.width > 0)
        strokeOutlines(run.glyphs, run.layer, origin);
    else
        repeatGlyphs(run.glyphs, run.layer, origin);
}

void QzAnnoLayoutManager::strokeOutlines(Range glyphRange, const Layer& layer, NSPoint origin) const {
    const Ref<NSGraphicsContext> context = NSGraphicsContext::currentContext();
    const GlyphStroke stroke = strokeOf(static_cast<float>(layer.width));
    context->setColor(layer.color);
    // Every visible glyph of a cluster, not only the first: an accent needs a border like the letter below it.
    const NSPoint displaced = {origin.x + layer.offset.x, origin.y + layer.offset.y};
    strokeAndFillGlyphs(*context, shownGlyphs(glyphRange, displaced), stroke, *glyphCache());
    for (const TextRule& rule : textRulesForGlyphRange(glyphRange, displaced)) {
        NSBezierPath path = NSBezierPath::bezierPathWithRect(rule.rect);
        path.setLineWidth(stroke.width);
        path.setLineCapStyle(stroke.lineCap);
        path.setLineJoinStyle(stroke.lineJoin);
        path.setMiterLimit(stroke.miterLimit);
        context->stroke(path);
        context->fill(path);
    }
}

GlyphStroke QzAnnoLayoutManager::strokeOf(float width) const {
    GlyphStroke stroke{.width = width};
    if (qualityFactor_ < kCoarsestBelow)
        stroke.flatness = kCoarsestFlatness;
    else if (qualityFactor_ < kCoarseBelow)
        stroke.flatness = kCoarseFlatness;
    if (qualityFactor_ <= kMitersUpTo) {
        stroke.lineCap = NSLineCapStyle::butt;
        stroke.lineJoin = NSLineJoinStyle::miter;
        stroke.miterLimit = kLayerMiterLimit;
    } else {
        stroke.lineCap = NSLineCapStyle::square;
        stroke.lineJoin = NSLineJoinStyle::round;
    }
    return stroke;
}

void QzAnnoLayoutManager::repeatGlyphs(Range glyphRange, const Layer& layer, NSPoint origin) {
    const auto width = static_cast<float>(layer.width);
    const float repeats = std::round(contextAntialiases() ? width : width * 0.5f);
    if (repeats > kRepeatsMax) {
        NSLog("A layer of width %@ is too wide without antialiasing; it is drawn %i wide\n",
              {shortestDecimal(width), 2 * kRepeatsMax});
    }
    const auto n = static_cast<int32_t>(std::clamp<float>(repeats, -1, kRepeatsMax));  // negative: no copies
    Range glyphs;
    const Range characters = characterRangeForGlyphRange(glyphRange, &glyphs);
    ObjectMap color;
    color.set(NSForegroundColorAttributeName, layer.color);
    addTemporaryAttributes(*NSDictionary::dictionaryWithMap(std::move(color)), characters);
    for (int32_t dx = -n; dx <= n; ++dx) {
        for (int32_t dy = -n; dy <= n; ++dy) {
            drawGlyphsForGlyphRange(glyphs, NSMakeRoundedPoint(origin.x + layer.offset.x + static_cast<float>(dx),
                                                               origin.y + layer.offset.y + static_cast<float>(dy)));
        }
    }
    removeTemporaryAttribute(*NSForegroundColorAttributeName, characters);
}

NSPoint NSMakeRoundedPoint(float x, float y) {
    return {std::round(x), std::round(y)};
}

}  // namespace qz
