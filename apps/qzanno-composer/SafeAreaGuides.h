#pragma once

#include <QWidget>

#include "QzAnno/platform/ui/NSTextViewWidget.h"

namespace qz::composer {

/// Draws the action-safe (outer) and title-safe (inner) frames over the text. Ignores pointer and keys. A child of the
/// text view's widget.
class SafeAreaGuides final : public QWidget {
public:
    // Fractions of the picture's width and height, centred, for 16:9: EBU R 95 and SMPTE ST 2046-1.
    static constexpr double kActionSafe = 0.93;
    static constexpr double kTitleSafe = 0.90;

    explicit SafeAreaGuides(const Ref<NSTextViewWidget>& over);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // The text view's responder belongs to its window.
    const WeakRef<NSTextViewWidget> over_;
};

}  // namespace qz::composer
