#pragma once

#include "QzAnno/platform/text/NSParagraphStyle.h"

namespace qz {

/// Walks a line in the order of its text and lets tabs lead to the tab stops of its paragraph. Points from the leading
/// margin, so from the right in a paragraph from right to left.
class LinePen {
public:
    /// `style` must live as long as the pen. Its tab stops are in order.
    LinePen(const NSParagraphStyle::Values& style, double indent) : style_(&style), start_(indent), stop_(indent) {}

    void advance(double width) {
        behind_ += width;
        if (!isPastPoint_) beforePoint_ += width;
    }
    /// A decimal point stands here, which the text behind a tab may be aligned by.
    void passDecimalPoint() { isPastPoint_ = true; }
    void tab();

    double position() const { return start_ + tabWidth() + behind_; }
    /// The width of the last tab, which may still shrink when text behind it is aligned by its end or its middle.
    double tabWidth() const;

private:
    const NSParagraphStyle::Values* style_;
    double start_;  ///< of the last tab
    double stop_;
    NSTextTab::Alignment alignment_ = NSTextTab::Alignment::left;
    double behind_ = 0;  ///< what stands behind the last tab
    double beforePoint_ = 0;
    bool isPastPoint_ = false;
};

}  // namespace qz
