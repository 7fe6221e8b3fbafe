#pragma once

#include <memory>

#include "platform/graphics/CoverageMask.h"
#include "platform/graphics/Paint.h"

namespace qz {

/// How a group is composited with what is beneath it, in the order of the COLR table's composite modes.
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

/// Paints a picture with more than one colour: a colour glyph's clips and groups, or a mask filled with a gradient. For
/// a mask filled with a single colour use `blendMask`, which needs no picture in between.
///
/// Transforms apply to later operations, as drawing operations nest.
class PictureCanvas {
public:
    /// Paints the pixels of `box`, which start transparent; everything outside is clipped.
    explicit PictureCanvas(const PixelRect& box);
    ~PictureCanvas();

    /// Save transform and clip, and restore the last saved ones.
    ///@{
    void save();
    void restore();
    ///@}
    void concat(const NSAffineTransform& transform);
    void clip(const NSBezierPath& path);

    /// Paints the whole clip under the current transform.
    void paint(const Paint& paint);
    /// The same through the mask, moved by (dx, dy) pixels. The transform does not apply to the mask.
    void paint(const Paint& paint, const CoverageMask& coverage, int32_t dx, int32_t dy);

    /// Anything painted in between is composited as one. Pairs nest.
    ///@{
    void beginGroup();
    void endGroup(CompositeMode mode);
    ///@}

    /// The painted picture: premultiplied RGBA of the box's size. Null if memory has run out.
    Ref<NSBitmapImageRep> picture() const;

private:
    struct Surface;

    /// Each sets Cairo's source for the next painting. Returns false if it paints nothing.
    ///@{
    bool setSource(const Paint& paint);
    bool setSource(StraightColor color);
    bool setSource(const Gradient& gradient);
    bool setSource(const Ref<NSBitmapImageRep>& bitmap);
    ///@}

    const std::unique_ptr<Surface> surface_;
};

}  // namespace qz
