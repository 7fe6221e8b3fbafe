#pragma once

#include "QzAnno/platform/ui/NSCell.h"
#include "QzAnno/platform/ui/NSView.h"

class QGroupBox;

namespace qz {

/// A frame around controls whose title cell is a text or a check box, which then enables or disables the controls
/// inside.
class NSBox final : public NSView {
public:
    /// Has the widget's title as text.
    static Ref<NSBox> boxWithWidget(QGroupBox* widget);
    ~NSBox() override;

    /// Never null.
    const Ref<NSCell>& titleCell() const { return titleCell_; }
    /// Copies the text of the former title cell to the new one. A switch button becomes a check box that sends its
    /// action to its target when clicked, with this box as sender. Null is ignored.
    void setTitleCell(const Ref<NSCell>& cell);

    std::string className() const override { return "NSBox"; }

private:
    explicit NSBox(QGroupBox* widget);
    QGroupBox* groupBox() const;

    Ref<NSCell> titleCell_;
};

/// Turns the box's title into a check box, with the text and tag of its title cell, that sends the action to the
/// target.
void setCellBox(NSBox& box, const Ref<NSResponder>& target, const std::string& action);

}  // namespace qz
