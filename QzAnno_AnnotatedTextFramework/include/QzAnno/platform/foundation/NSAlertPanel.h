#pragma once

#include <cstdint>
#include <string>

#include "QzAnno/platform/foundation/Callback.h"

namespace qz {

/// Which button of an alert was chosen.
enum NSAlertReturn : int32_t { NSAlertOtherReturn = -1, NSAlertAlternateReturn = 0, NSAlertDefaultReturn = 1 };

/// What an alert shows, in UTF-8.
struct AlertPanel {
    std::string title;            ///< of the window
    std::string message;          ///< what happened
    std::string defaultButton;    ///< answers `NSAlertDefaultReturn`
    std::string alternateButton;  ///< answers `NSAlertAlternateReturn`; an empty text is no button
    std::string otherButton;      ///< answers `NSAlertOtherReturn`; an empty text is no button
};

/// Shows an alert and returns the button that was chosen. May be called from any thread that uses the library.
using AlertHook = Callback<NSAlertReturn(const AlertPanel& panel)>;

/// Shows an alert about something that should never happen and waits until a button is chosen. Without a hook, which a
/// program with a screen sets, one line on standard error names message and buttons, and the default button counts as
/// chosen.
NSAlertReturn NSRunCriticalAlertPanel(const AlertPanel& panel);
/// Shows later alerts through the hook, or on standard error when it is empty. Safe while other threads raise alerts.
void setCriticalAlertHook(AlertHook hook);

}  // namespace qz
