#pragma once

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "bench/peers/Titles.h"

namespace qz::peers {

/// The library as used by a host: a palette of one style and a pipeline for one screen, reused for all titles.
class OwnPipeline {
public:
    /// A screen of this size in points, with `scale` pixels per point.
    OwnPipeline(int width, int height, int scale = 1);
    /// Sets the title of the next image. Every call makes a new annotated string.
    void setTitle(const Title& title);
    void setTitle(const Ref<QzMutableAnnoString>& title);
    /// `drawn` receives the area of the frame that it may have changed.
    void drawInto(Frame& frame, PixelRect& drawn);
    QzAnnoStringToScreen& screen() { return *screen_; }
    const QzAnnoPalette& palette() const { return *palette_; }
    void setStyle(const Title& title);

private:
    const Ref<QzAnnoPalette> palette_;
    const Ref<QzAnnoStringToScreen> screen_;
    const Ref<QzAnnoKey> key_;
    double size_ = 0;
};

}  // namespace qz::peers
