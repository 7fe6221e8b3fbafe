#pragma once

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// A picture to draw into, with a size in points and one pixel per point, initially transparent.
class NSImage final : public NSObject {
public:
    /// Returns null if the size is not finite, not positive, or its pixels exceed `NSBitmapImageRep::kBytesMax`. A
    /// fraction of a point takes a whole pixel.
    static Ref<NSImage> initWithSize(NSSize size);

    /// In points, as requested; the bitmap has whole pixels.
    NSSize size() const { return size_; }
    /// Whether drawing has its origin at the top left with y growing downward. Takes effect at the next `lockFocus`;
    /// existing pixels do not move. False by default.
    void setFlipped(bool flipped) { flipped_ = flipped; }

    /// Makes a new context on this image the current one, until `unlockFocus` restores the previous context. Pairs may
    /// nest, even between images, but must stay on one thread. An unlock that does not match the innermost lock does
    /// nothing.
    ///@{
    void lockFocus();
    void unlockFocus();
    ///@}

    /// The image's own pixels, not a copy.
    const Ref<NSBitmapImageRep>& bitmap() const { return bitmap_; }

    std::string className() const override { return "NSImage"; }

private:
    NSImage(NSSize size, Ref<NSBitmapImageRep> bitmap) : size_(size), bitmap_(std::move(bitmap)) {}

    const NSSize size_;
    const Ref<NSBitmapImageRep> bitmap_;
    bool flipped_ = false;
};

}  // namespace qz
