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

    /// Whether opacity can be chosen; not at the start.
    ///@{
    bool showsAlpha() const;
    void setShowsAlpha(bool shows);
    ///@}
    /// The colour that the panel shows, black before it is first opened; never none.
    Ref<NSColor> color() const;
    /// Shows the panel with the colour, or with the one that it has for none; `choose` gets every colour chosen from
    /// now on, until the panel is opened for another or ordered out. It must not outlive what it refers to.
    void openForColor(const Ref<NSColor>& color, std::function<void(const Ref<NSColor>&)> choose);
    /// Hides the panel; nobody gets its colours any more.
    void orderOut();

    /// The panel's own; null before it is first opened.
    QWidget* widget() const;

private:
    NSColorPanel();
    ~NSColorPanel();

    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
