#pragma once

#include <QPushButton>
#include <functional>

#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// A button that shows a colour and opens the colour panel for it.
class ColorWell final : public QPushButton {
public:
    explicit ColorWell(QWidget* parent = nullptr);

    const Ref<NSColor>& color() const { return color_; }
    void setColor(const Ref<NSColor>& color);
    /// Called with each colour that the user chooses.
    void setChosen(std::function<void(const Ref<NSColor>&)> chosen) { chosen_ = std::move(chosen); }

    QSize sizeHint() const override { return {64, 26}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Ref<NSColor> color_ = NSColor::blackColor();
    std::function<void(const Ref<NSColor>&)> chosen_;
};

/// Draws a checkerboard of two greys, to be seen through transparent colours.
void drawCheckerboard(QPainter& painter, const QRect& rect, int squareSize);

}  // namespace qz
