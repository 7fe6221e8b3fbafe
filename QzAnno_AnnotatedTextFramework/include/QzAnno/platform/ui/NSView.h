#pragma once

#include <memory>

#include "QzAnno/platform/ui/NSResponder.h"

class QWidget;

namespace qz {

/// The responder of a widget. The widget belongs to its parent or window; once it has been destroyed, the view does
/// nothing.
class NSView : public NSResponder {
public:
    /// Makes the view of a widget that has none yet.
    static Ref<NSView> viewWithWidget(QWidget* widget);
    ~NSView() override;

    /// Null once it has been destroyed.
    QWidget* widget() const;
    /// The responder of this widget itself, or null.
    static NSResponder* responderOfWidget(const QWidget* widget);

    /// What screen readers say if the widget itself shows no text.
    void setAccessibleName(const std::string& name);

    std::string className() const override { return "NSView"; }

protected:
    /// As `viewWithWidget`; a null widget makes a view that does nothing.
    explicit NSView(QWidget* widget);

private:
    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
