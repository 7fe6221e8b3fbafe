#pragma once

#include "QzAnno/platform/ui/NSCell.h"
#include "QzAnno/platform/ui/NSView.h"

class QGroupBox;

namespace qz {

/// A frame around controls, with a cell for a title: a text, or a check box, which then decides whether the controls
/// inside can be used.
class NSBox final : public NSView {
public:
    /// With a text for a title, that of the widget.
    static Ref<NSBox> boxWithWidget(QGroupBox* widget);
    ~NSBox() override;

    /// Never none.
    const Ref<NSCell>& titleCell() const { return titleCell_; }
    /// The text of the former title cell goes over to the new one; a switch button becomes a check box, whose action
    /// goes to its target when it is clicked, with this box as the sender. None is ignored.
    void setTitleCell(const Ref<NSCell>& cell);
    /// The state of a check box in the title; on without one. Setting it sends no action, and does nothing without one.
    ///@{
    bool titleIsOn() const;
    void setTitleIsOn(bool on);
    ///@}

    std::string className() const override { return "NSBox"; }

private:
    explicit NSBox(QGroupBox* widget);
    QGroupBox* groupBox() const;

    Ref<NSCell> titleCell_;
};

/// Gives the box a check box for a title, with the text and tag of its title cell, which sends the action to the
/// target.
void setCellBox(NSBox& box, const Ref<NSResponder>& target, const std::string& action);

}  // namespace qz
