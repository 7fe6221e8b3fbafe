#pragma once

#include <functional>
#include <memory>

#include "QzAnno/platform/graphics/NSColor.h"

class QWidget;

namespace qz {

/// The application's panel for choosing colours.
class NSColorPanel final {
public:
    /// Lives until the process ends.
    static NSColorPanel& sharedColorPanel();

    /// Whether opacity can be chosen; false by default.
    ///@{
    bool showsAlpha() const;
    void setShowsAlpha(bool shows);
    ///@}
    /// The colour that the panel shows, black before it is first opened; never null.
    Ref<NSColor> color() const;
    /// Shows the panel with the colour, or with its current colour if null. `choose` receives every colour chosen until
    /// the panel is opened again or hidden, and must not outlive what it refers to.
    void openForColor(const Ref<NSColor>& color, std::function<void(const Ref<NSColor>&)> choose);
    /// Hides the panel and stops reporting its colours.
    void orderOut();

    /// The panel's widget; null before it is first opened.
    QWidget* widget() const;

private:
    NSColorPanel();
    ~NSColorPanel();

    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
