#pragma once

#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// A picture of a size in points that is drawn into, one pixel a point, and starts fully transparent.
class NSImage final : public NSObject {
public:
    /// None when the size is not finite, not positive, or its pixels are beyond `NSBitmapImageRep::kBytesMax`. A
    /// fraction of a point has a pixel of its own.
    static Ref<NSImage> initWithSize(NSSize size);

    /// In points, as it was asked for, while the bitmap has whole pixels.
    NSSize size() const { return size_; }
    /// Whether drawing sees the origin at the top left with y growing downward. Takes effect at the next `lockFocus`;
    /// what is drawn already stays where it is. False at first.
    ///@{
    bool isFlipped() const { return flipped_; }
    void setFlipped(bool flipped) { flipped_ = flipped; }
    ///@}

    /// Makes a fresh context on this image the current one, until `unlockFocus` brings back the one before. Pairs may
    /// nest, also between images; they stay on one thread. An unlock that does not match the innermost lock does
    /// nothing.
    ///@{
    void lockFocus();
    void unlockFocus();
    ///@}

    /// The pixels. Reference to the image's own, not a copy.
    const Ref<NSBitmapImageRep>& bitmap() const { return bitmap_; }

    std::string className() const override { return "NSImage"; }

private:
    NSImage(NSSize size, Ref<NSBitmapImageRep> bitmap) : size_(size), bitmap_(std::move(bitmap)) {}

    const NSSize size_;
    const Ref<NSBitmapImageRep> bitmap_;
    bool flipped_ = false;
};

}  // namespace qz
