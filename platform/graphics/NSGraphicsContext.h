#pragma once

#include <memory>
#include <span>
#include <vector>

#include "platform/graphics/NSAffineTransform.h"
#include "platform/graphics/NSBezierPath.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

class DeviceShape;
struct CoverageMask;

/// Draws into a 32-bit bitmap, source over destination, one colour at a time; black until one is set.
///
/// Every thread has a current context of its own, and contexts on distinct bitmaps may draw at the same time. A shape
/// costs the pixels of its own box, cut to the bitmap; one wholly outside, or with a coordinate that is not finite,
/// draws nothing.
class NSGraphicsContext final : public NSObject {
public:
    /// For an RGBA bitmap of 8-bit samples; none for another. `flipped`: user space has its origin at the top left with
    /// y growing downward; otherwise at the bottom left with y growing upward.
    static Ref<NSGraphicsContext> graphicsContextWithBitmapImageRep(Ref<NSBitmapImageRep> bitmap, bool flipped);
    ~NSGraphicsContext() override;

    /// The context of this thread; none until one is set.
    static Ref<NSGraphicsContext> currentContext();
    /// The thread keeps the context alive until another is set; none leaves the thread without one.
    static void setCurrentContext(Ref<NSGraphicsContext> context);

    /// Saves colour, transform and antialiasing; `restoreGraphicsState` brings the last saved ones back, or does
    /// nothing when none are left.
    ///@{
    void saveGraphicsState();
    void restoreGraphicsState();
    ///@}

    /// True at first. Without it a pixel of a fill or a stroke is covered wholly or not at all; masks are as they were
    /// made.
    ///@{
    bool shouldAntialias() const { return state_.shouldAntialias; }
    void setShouldAntialias(bool antialias) { state_.shouldAntialias = antialias; }
    ///@}
    /// Of everything drawn but bitmaps; with none only these are drawn.
    ///@{
    const Ref<NSColor>& color() const { return state_.color; }
    void setColor(Ref<NSColor> color) { state_.color = std::move(color); }
    ///@}
    /// From user space to pixels, origin at the top left.
    const NSAffineTransform& transform() const { return state_.transform; }
    /// Prepends: what is drawn from now on goes through `transform` first. Masks, shapes and bitmaps are placed in
    /// pixels and go through neither.
    void concatTransform(const NSAffineTransform& transform) { state_.transform.prependTransform(transform); }

    /// Fills by the non-zero rule, open subpaths as if they were closed.
    void fill(const NSBezierPath& path);
    /// Strokes with the path's width, caps, joins and miter limit, in user space.
    void stroke(const NSBezierPath& path);
    /// Draws a premultiplied RGBA bitmap, unscaled, its top left pixel on the pixel (x, y) of the target, thinned to
    /// `alpha` of 255. A bitmap of another kind, or the target itself, draws nothing.
    void drawBitmap(const NSBitmapImageRep& bitmap, int32_t x, int32_t y, uint8_t alpha = 255);
    /// Fills what a mask covers, its box moved by (dx, dy) pixels. A mask that holds the colour's alpha already is
    /// filled as if that were 1.
    void drawMask(const CoverageMask& mask, int32_t dx, int32_t dy, bool holdsAlpha = false);
    /// Fills what shapes cover between them, moved by (dx, dy) pixels: the colour is laid on once, where they overlap
    /// too.
    void drawShapes(std::span<const DeviceShape> shapes, int32_t dx, int32_t dy);

    /// Until `endGathering`, fills and strokes draw nothing; what they cover, each point of it once, is then filled in
    /// the colour of that time. Bitmaps are drawn at once. Pairs do not nest.
    ///@{
    void beginGathering();
    void endGathering();
    ///@}
    /// Whether a pair is open.
    bool isGathering() const { return gathered_ != nullptr; }

    /// The pixels that anything drawn through this context may have changed.
    const PixelRect& changedBox() const { return changedBox_; }

    /// The target, never none, which the context keeps alive.
    const Ref<NSBitmapImageRep>& bitmap() const { return bitmap_; }

    std::string className() const override { return "NSGraphicsContext"; }

private:
    struct State {
        Ref<NSColor> color;
        NSAffineTransform transform;
        bool shouldAntialias = true;
    };

    NSGraphicsContext(Ref<NSBitmapImageRep> bitmap, const NSAffineTransform& transform);

    void gather(const CoverageMask& mask, int32_t dx, int32_t dy);

    const Ref<NSBitmapImageRep> bitmap_;
    State state_;
    std::vector<State> saved_;
    // Its storage serves one shape after another.
    const std::unique_ptr<CoverageMask> mask_;
    // None while drawing goes straight to the bitmap.
    std::unique_ptr<CoverageMask> gathered_;
    PixelRect changedBox_;
};

}  // namespace qz
