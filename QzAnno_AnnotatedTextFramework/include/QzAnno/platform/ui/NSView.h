#pragma once

#include <memory>

#include "QzAnno/platform/ui/NSResponder.h"

class QWidget;

namespace qz {

/// The responder of a widget. The widget belongs to its parent, or to its window; a view whose widget has gone does
/// nothing.
class NSView : public NSResponder {
public:
    /// A view on a widget that has none yet.
    static Ref<NSView> viewWithWidget(QWidget* widget);
    ~NSView() override;

    /// Null once it has gone.
    QWidget* widget() const;
    /// The responder of exactly this widget; none when it has none.
    static NSResponder* responderOfWidget(const QWidget* widget);

    /// What reading programs say, where the widget itself shows no text.
    void setAccessibleName(const std::string& name);

    std::string className() const override { return "NSView"; }

protected:
    /// As `viewWithWidget`; null makes a view that does nothing.
    explicit NSView(QWidget* widget);

private:
    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
