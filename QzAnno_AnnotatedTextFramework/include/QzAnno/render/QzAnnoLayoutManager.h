#pragma once

#include "QzAnno/platform/text/NSLayoutManager.h"

namespace qz {

struct GlyphStroke;

struct Layer;

/// Lays text out as its base does, and draws more than glyphs: from the bottom a bounding box, layer 2, layer 1, the
/// glyphs.
///
/// A layer is a widened and displaced copy of the glyphs in a colour of its own, as the text's attributes say: stroked
/// outlines with antialiasing, repeated glyphs without. Offsets are points, x to the right and y downward.
class QzAnnoLayoutManager final : public NSLayoutManager {
public:
    /// Draws nothing until it has a text storage and a text container.
    static Ref<QzAnnoLayoutManager> init();

    /// True unless antialiasing has been switched off. Until it is set, drawing goes by what the graphics context says.
    bool antialiasing() const { return antialiasingMode_ != off; }
    /// Screen fonts are used exactly when antialiasing is off.
    void setAntialiasing(bool antialiasing);
    /// How carefully outlines are stroked: 1 is the best. Below 2/3 curves are coarser, below 1/3 coarser still; 0.5
    /// and below have mitred joins instead of round ones.
    ///@{
    float qualityFactor() const { return qualityFactor_; }
    void setQualityFactor(float quality) { qualityFactor_ = quality; }
    ///@}

    /// Whether each layer is gathered over all that is drawn and then laid down once, so that a translucent outline or
    /// shadow is even where glyphs, or a glyph's stroke and its fill, overlap. Runs whose layers have one colour gather
    /// together. Off at the start: glyphs are laid one over another.
    ///@{
    bool mergesLayers() const { return mergesLayers_; }
    void setMergesLayers(bool merges) { mergesLayers_ = merges; }
    ///@}

    /// The font of a character as it is drawn: the screen font when those are used. None beyond the text.
    Ref<NSFont> fontAtIndex(uint32_t index) const;

    /// As the attributes `QzUnderlineAttribute` and `QzStrikeThroughAttribute` ask.
    TextRuleKinds ruleKinds(const NSDictionary& attributes) const override;
    /// Draws the glyphs, with rules under and through them, and their layers, which follow both; `atPoint` is where the
    /// container's origin lies in the current graphics context.
    void drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint) override;
    /// Draws what lies beneath the glyphs: 2 the bounding box and the second layer, 1 the first layer.
    void myDraw(Range glyphRange, uint32_t asBackground, NSPoint atPoint);

    std::string className() const override { return "QzAnnoLayoutManager"; }

private:
    enum AntialiasingMode : int32_t { asContext = -1, off = 0, on = 1 };

    QzAnnoLayoutManager() = default;

    struct StyledRun;
    struct LayerRun;

    /// The layers from one down to another, both counted from 1 at the top; with the lowest, the bounding box too.
    void drawBeneath(Range glyphRange, uint32_t fromLayer, uint32_t toLayer, NSPoint origin);
    void waitForBackgroundLayout(Range glyphRange) const;
    void drawBoundingBoxes(Range glyphRange, NSPoint origin) const;
    std::vector<StyledRun> styledRuns(Range glyphRange) const;
    void drawLayer(const std::vector<StyledRun>& runs, uint32_t number, NSPoint origin);
    void drawMerged(const std::vector<LayerRun>& runs, NSPoint origin);
    void drawRun(const LayerRun& run, NSPoint origin);
    void strokeOutlines(Range glyphRange, const Layer& layer, NSPoint origin) const;
    void repeatGlyphs(Range glyphRange, const Layer& layer, NSPoint origin);
    GlyphStroke strokeOf(float width) const;

    AntialiasingMode antialiasingMode_ = asContext;
    float qualityFactor_ = 1.0f;
    bool mergesLayers_ = false;
    // Layers draw glyphs through this class again; those must not have layers of their own.
    bool drawing_ = false;
};

/// The point with both coordinates rounded to whole numbers, halves away from zero.
NSPoint NSMakeRoundedPoint(float x, float y);

}  // namespace qz
