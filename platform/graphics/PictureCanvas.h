#pragma once

#include <memory>

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/Paint.h"

namespace qz {

/// How a group is laid over what lies beneath it, in the order of the COLR table's composite modes.
enum class CompositeMode : uint8_t {
    clear,
    source,
    destination,
    sourceOver,
    destinationOver,
    sourceIn,
    destinationIn,
    sourceOut,
    destinationOut,
    sourceAtop,
    destinationAtop,
    exclusiveOr,
    plus,
    screen,
    overlay,
    darken,
    lighten,
    colorDodge,
    colorBurn,
    hardLight,
    softLight,
    difference,
    exclusion,
    multiply,
    hue,
    saturation,
    color,
    luminosity,
};

/// Paints a picture that has more than one colour: a colour glyph's clips and groups, or a mask filled with a gradient.
/// A mask filled with a single colour takes `blendMask`, which is several times as fast.
///
/// Transforms act on what comes after them, as drawing operations nest.
class PictureCanvas {
public:
    /// For the pixels of `box`, transparent at first; everything outside is cut off.
    explicit PictureCanvas(const PixelRect& box);
    ~PictureCanvas();

    /// Saves transform and clip, and brings the last saved ones back.
    ///@{
    void save();
    void restore();
    ///@}
    void concat(const NSAffineTransform& transform);
    void clip(const NSBezierPath& path);

    /// Lays the paint, under the current transform, over all that the clip leaves.
    void paint(const Paint& paint);
    /// The same as far as the mask, moved by (dx, dy) pixels, covers. The transform does not move the mask.
    void paint(const Paint& paint, const CoverageMask& coverage, int32_t dx, int32_t dy);

    /// What is painted in between is laid over the rest as one. Pairs nest.
    ///@{
    void beginGroup();
    void endGroup(CompositeMode mode);
    ///@}

    /// What has been painted: premultiplied RGBA of the box's size. Null if there is no memory for it.
    Ref<NSBitmapImageRep> picture() const;

private:
    struct Surface;

    /// Each makes what is given the source of what Cairo paints next. False if it paints nothing.
    ///@{
    bool setSource(const Paint& paint);
    bool setSource(StraightColor color);
    bool setSource(const Gradient& gradient);
    bool setSource(const Ref<NSBitmapImageRep>& bitmap);
    ///@}

    const std::unique_ptr<Surface> surface_;
};

}  // namespace qz
