#pragma once

#include <QWidget>

#include "QzAnno/platform/ui/NSTextViewWidget.h"

namespace qz::composer {

/// Two frames over the text: what a receiver shows of the action (outer) and where titles may stand (inner). Takes
/// neither pointer nor keys. A child of the text view's widget.
class SafeAreaGuides final : public QWidget {
public:
    // Parts of the picture's width and height, centred, for 16:9: EBU R 95 and SMPTE ST 2046-1.
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
