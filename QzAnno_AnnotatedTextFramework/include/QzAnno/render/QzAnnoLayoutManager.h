#pragma once

#include "QzAnno/platform/text/NSLayoutManager.h"

namespace qz {

struct GlyphStroke;

struct Layer;

/// Lays text out like its base class, and draws more than glyphs: from the bottom up, a bounding box, layer 2, layer 1,
/// the glyphs.
///
/// A layer is a widened and displaced copy of the glyphs in its own colour, given by the text's attributes: stroked
/// outlines with antialiasing, repeated glyphs without. Offsets are in points, x to the right and y downward.
class QzAnnoLayoutManager final : public NSLayoutManager {
public:
    /// Draws nothing until it has a text storage and a text container.
    static Ref<QzAnnoLayoutManager> init();

    /// True unless antialiasing has been switched off. Until it is set, drawing follows the graphics context.
    bool antialiasing() const { return antialiasingMode_ != off; }
    /// Screen fonts are used if and only if antialiasing is off.
    void setAntialiasing(bool antialiasing);
    /// The quality of stroked outlines; 1 is the best. Curves are coarser below 2/3, and more so below 1/3; at 0.5 and
    /// below, joins are mitred instead of round.
    ///@{
    float qualityFactor() const { return qualityFactor_; }
    void setQualityFactor(float quality) { qualityFactor_ = quality; }
    ///@}

    /// Whether each layer is collected over all runs of its colour and then drawn once, so that a translucent outline
    /// or shadow is even where glyphs, or a glyph's stroke and fill, overlap. Off by default: glyphs are drawn one over
    /// another.
    ///@{
    bool mergesLayers() const { return mergesLayers_; }
    void setMergesLayers(bool merges) { mergesLayers_ = merges; }
    ///@}

    /// The font that draws a character: the screen font if those are used. Null beyond the text.
    Ref<NSFont> fontAtIndex(uint32_t index) const;

    /// Reads `QzUnderlineAttribute` and `QzStrikeThroughAttribute`.
    TextRuleKinds ruleKinds(const NSDictionary& attributes) const override;
    /// Draws the glyphs, with rules under and through them, and the layers of both; `atPoint` is the container's origin
    /// in the current graphics context.
    void drawGlyphsForGlyphRange(Range glyphRange, NSPoint atPoint) override;
    /// Draws what is beneath the glyphs: for 2 the bounding box and the second layer, for 1 the first layer.
    void myDraw(Range glyphRange, uint32_t asBackground, NSPoint atPoint);

    std::string className() const override { return "QzAnnoLayoutManager"; }

private:
    enum AntialiasingMode : int32_t { asContext = -1, off = 0, on = 1 };

    QzAnnoLayoutManager() = default;

    struct StyledRun;
    struct LayerRun;

    /// Draws the layers from one down to another, both counted from 1 at the top, and the bounding box with the lowest.
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
    // Layers draw glyphs through this class again; those glyphs must not get layers themselves.
    bool drawing_ = false;
};

/// The point with both coordinates rounded to whole numbers, halves away from zero.
NSPoint NSMakeRoundedPoint(float x, float y);

}  // namespace qz
