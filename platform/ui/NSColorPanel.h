#pragma once

#include <functional>
#include <memory>

#include "platform/graphics/NSColor.h"

class QWidget;

namespace qz {

/// The application's panel for choosing colours.
class NSColorPanel final {
public:
    static NSColorPanel& sharedColorPanel();

    bool showsAlpha() const;
    void setShowsAlpha(bool shows);
    Ref<NSColor> color() const;
    /// Shows the panel with the colour; `choose` gets every colour chosen from now on, until the panel is opened for
    /// another.
    void openForColor(const Ref<NSColor>& color, std::function<void(const Ref<NSColor>&)> choose);
    void orderOut();

    QWidget* widget() const;

private:
    NSColorPanel();
    ~NSColorPanel();

    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
