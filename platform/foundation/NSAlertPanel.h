#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace qz {

/// Which button of an alert was chosen.
enum NSAlertReturn : int32_t { NSAlertOtherReturn = -1, NSAlertAlternateReturn = 0, NSAlertDefaultReturn = 1 };

/// What an alert shows, in UTF-8.
struct AlertPanel {
    std::string title;
    std::string message;
    std::string defaultButton;
    std::string alternateButton;
    std::string otherButton;
};

/// Shows an alert and returns the button that was chosen. May be called from any thread that uses the library.
using AlertHook = std::function<NSAlertReturn(const AlertPanel& panel)>;

/// Shows an alert about something that should never happen and waits until a button is chosen. Without a hook, which a
/// program with a screen sets, one line on standard error names message and buttons, and the default button counts as
/// chosen.
NSAlertReturn NSRunCriticalAlertPanel(const AlertPanel& panel);
void setCriticalAlertHook(AlertHook hook);

}  // namespace qz
