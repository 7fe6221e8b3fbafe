#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "platform/graphics/NSAffineTransform.h"
#include "platform/graphics/NSBezierPath.h"
#include "platform/graphics/Paint.h"

namespace qz {

class DeviceShape;
struct CoverageMask;

/// Draws into a 32-bit bitmap, source over destination. Everything except bitmaps is coverage filled with a paint,
/// black by default.
///
/// Every thread has its own current context, and contexts on distinct bitmaps may draw at the same time. The cost of a
/// shape is its own box, cut to the bitmap; a shape entirely outside, or with a coordinate that is not finite, draws
/// nothing.
class NSGraphicsContext final : public NSObject {
public:
    /// Takes an RGBA bitmap with 8-bit samples; returns null for any other. If `flipped`, user space has its origin at
    /// the top left with y growing downward, otherwise at the bottom left with y growing upward.
    static Ref<NSGraphicsContext> graphicsContextWithBitmapImageRep(Ref<NSBitmapImageRep> bitmap, bool flipped);
    ~NSGraphicsContext() override;

    /// This thread's context; null until one is set.
    static Ref<NSGraphicsContext> currentContext();
    /// The thread keeps the context alive until another is set; null removes it.
    static void setCurrentContext(Ref<NSGraphicsContext> context);

    /// Saves paint, transform and antialiasing; `restoreGraphicsState` restores the last saved ones, or does nothing if
    /// there are none.
    ///@{
    void saveGraphicsState();
    void restoreGraphicsState();
    ///@}

    /// True by default. Without it, fills and strokes cover a pixel completely or not at all; masks are not affected.
    ///@{
    bool shouldAntialias() const { return state_.shouldAntialias; }
    void setShouldAntialias(bool antialias) { state_.shouldAntialias = antialias; }
    ///@}
    /// The paint that fills coverage. Without one, only bitmaps are drawn.
    ///@{
    const std::optional<Paint>& paint() const { return state_.paint; }
    void setPaint(std::optional<Paint> paint) { state_.paint = std::move(paint); }
    ///@}
    /// Sets a single colour as paint; null removes the paint.
    void setColor(const Ref<NSColor>& color);
    /// From user space to pixels, origin at the top left.
    const NSAffineTransform& transform() const { return state_.transform; }
    /// Prepends `transform`, so that later drawing goes through it first. Masks, shapes and bitmaps are placed in
    /// pixels and are not transformed.
    void concatTransform(const NSAffineTransform& transform) { state_.transform.prependTransform(transform); }

    /// Fills by the non-zero rule, treating open subpaths as closed.
    void fill(const NSBezierPath& path);
    /// Strokes with the path's width, caps, joins and miter limit, in user space.
    void stroke(const NSBezierPath& path);
    /// Draws a premultiplied RGBA bitmap, unscaled, with its top left pixel at pixel (x, y) of the target and an
    /// opacity of `alpha` of 255. Does nothing for any other bitmap or the target itself.
    void drawBitmap(const NSBitmapImageRep& bitmap, int32_t x, int32_t y, uint8_t alpha = 255);
    /// Fills the area covered by a mask, moved by (dx, dy) pixels. If the mask already includes the alpha of a single
    /// colour, the colour is treated as opaque.
    void drawMask(const CoverageMask& mask, int32_t dx, int32_t dy, bool holdsAlpha = false);
    /// Fills the union of the shapes, moved by (dx, dy) pixels: the paint is applied once, even where they overlap.
    void drawShapes(std::span<const DeviceShape> shapes, int32_t dx, int32_t dy);

    /// Until `endGathering`, fills and strokes only collect coverage, which is then filled once with the paint at that
    /// time. Bitmaps are drawn immediately. Pairs do not nest.
    ///@{
    void beginGathering();
    void endGathering();
    ///@}
    /// Whether a pair is open.
    bool isGathering() const { return gathered_ != nullptr; }

    /// The pixels that drawing through this context may have changed.
    const PixelRect& changedBox() const { return changedBox_; }

    /// The target; never null, and kept alive by the context.
    const Ref<NSBitmapImageRep>& bitmap() const { return bitmap_; }

    std::string className() const override { return "NSGraphicsContext"; }

private:
    struct State {
        std::optional<Paint> paint;
        NSAffineTransform transform;
        bool shouldAntialias = true;
    };

    NSGraphicsContext(Ref<NSBitmapImageRep> bitmap, const NSAffineTransform& transform);

    void gather(const CoverageMask& mask, int32_t dx, int32_t dy);

    const Ref<NSBitmapImageRep> bitmap_;
    State state_;
    std::vector<State> saved_;
    // Its storage is reused for one shape after another.
    const std::unique_ptr<CoverageMask> mask_;
    // Null unless gathering.
    std::unique_ptr<CoverageMask> gathered_;
    PixelRect changedBox_;
};

}  // namespace qz
