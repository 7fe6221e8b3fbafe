#pragma once

#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "bench/peers/Titles.h"

namespace qz::peers {

/// The library as a host uses it: a palette of one style and a pipeline for one screen, kept from title to title.
class OwnPipeline {
public:
    /// A screen of so many points, a point `scale` pixels wide and high.
    OwnPipeline(int width, int height, int scale = 1);
    /// The next image shows this title. Every call makes a new annotated string.
    void setTitle(const Title& title);
    void setTitle(const Ref<QzMutableAnnoString>& title);
    /// `drawn` receives what of the frame it may have changed.
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
