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

/// Draws into a 32-bit bitmap, source over destination. Everything but a bitmap is coverage filled with a paint: black,
/// until another is set.
///
/// Every thread has a current context of its own, and contexts on distinct bitmaps may draw at the same time. A shape
/// costs the pixels of its own box, cut to the bitmap; one wholly outside, or with a coordinate that is not finite,
/// draws nothing.
class NSGraphicsContext final : public NSObject {
public:
    /// For an RGBA bitmap of 8-bit samples; null for another. `flipped`: user space has its origin at the top left with
    /// y growing downward; otherwise at the bottom left with y growing upward.
    static Ref<NSGraphicsContext> graphicsContextWithBitmapImageRep(Ref<NSBitmapImageRep> bitmap, bool flipped);
    ~NSGraphicsContext() override;

    /// The context of this thread; null until one is set.
    static Ref<NSGraphicsContext> currentContext();
    /// The thread keeps the context alive until another is set; null leaves the thread without one.
    static void setCurrentContext(Ref<NSGraphicsContext> context);

    /// Saves paint, transform and antialiasing; `restoreGraphicsState` brings the last saved ones back, or does nothing
    /// if nothing is saved.
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
    /// What coverage is filled with. Without a paint only bitmaps are drawn.
    ///@{
    const std::optional<Paint>& paint() const { return state_.paint; }
    void setPaint(std::optional<Paint> paint) { state_.paint = std::move(paint); }
    ///@}
    /// Makes a single colour the paint; null leaves the context without one.
    void setColor(const Ref<NSColor>& color);
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
    /// Fills what a mask covers, its box moved by (dx, dy) pixels. A mask that holds the alpha of a single colour
    /// already is filled as if that were 1.
    void drawMask(const CoverageMask& mask, int32_t dx, int32_t dy, bool holdsAlpha = false);
    /// Fills what shapes cover between them, moved by (dx, dy) pixels: the paint is laid on once, even where they
    /// overlap.
    void drawShapes(std::span<const DeviceShape> shapes, int32_t dx, int32_t dy);

    /// Until `endGathering`, fills and strokes draw nothing; what they cover is then filled once, with the paint of
    /// that moment. Bitmaps are drawn at once. Pairs do not nest.
    ///@{
    void beginGathering();
    void endGathering();
    ///@}
    /// Whether a pair is open.
    bool isGathering() const { return gathered_ != nullptr; }

    /// The pixels that anything drawn through this context may have changed.
    const PixelRect& changedBox() const { return changedBox_; }

    /// The target, never null, which the context keeps alive.
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
    // Its storage serves one shape after another.
    const std::unique_ptr<CoverageMask> mask_;
    // Null while drawing goes straight to the bitmap.
    std::unique_ptr<CoverageMask> gathered_;
    PixelRect changedBox_;
};

}  // namespace qz
