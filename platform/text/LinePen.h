#pragma once

#include "QzAnno/platform/text/NSParagraphStyle.h"

namespace qz {

/// Walks a line in text order and moves tabs to the paragraph's tab stops. Positions are points from the leading
/// margin, which is the right one in a right-to-left paragraph.
class LinePen {
public:
    /// `style` must outlive the pen, with its tab stops sorted.
    LinePen(const NSParagraphStyle::Values& style, double indent) : style_(&style), start_(indent), stop_(indent) {}

    void advance(double width) {
        behind_ += width;
        if (!isPastPoint_) beforePoint_ += width;
    }
    /// Marks a decimal point, by which the text after a tab may be aligned.
    void passDecimalPoint() { isPastPoint_ = true; }
    void tab();

    double position() const { return start_ + tabWidth() + behind_; }
    /// The width of the last tab, which may still shrink if the text after it is aligned by its end or middle.
    double tabWidth() const;

private:
    const NSParagraphStyle::Values* style_;
    double start_;  ///< of the last tab
    double stop_;
    NSTextTab::Alignment alignment_ = NSTextTab::Alignment::left;
    double behind_ = 0;  ///< the width after the last tab
    double beforePoint_ = 0;
    bool isPastPoint_ = false;
};

}  // namespace qz
