#pragma once

#include <cstdint>
#include <string>

#include "QzAnno/platform/foundation/Callback.h"

namespace qz {

/// The button that was chosen.
enum NSAlertReturn : int32_t { NSAlertOtherReturn = -1, NSAlertAlternateReturn = 0, NSAlertDefaultReturn = 1 };

/// The contents of an alert, in UTF-8.
struct AlertPanel {
    std::string title;            ///< window title
    std::string message;          ///< what happened
    std::string defaultButton;    ///< returns `NSAlertDefaultReturn`
    std::string alternateButton;  ///< returns `NSAlertAlternateReturn`; no button if empty
    std::string otherButton;      ///< returns `NSAlertOtherReturn`; no button if empty
};

/// Shows an alert and returns the chosen button. May be called from any thread that uses the library.
using AlertHook = Callback<NSAlertReturn(const AlertPanel& panel)>;

/// Shows an alert about something that should never happen and waits until a button is chosen. Programs with a screen
/// set a hook for it; without one, the message and buttons go to standard error as one line and the default button
/// counts as chosen.
NSAlertReturn NSRunCriticalAlertPanel(const AlertPanel& panel);
/// Sends later alerts to the hook, or to standard error if it is empty. Safe while other threads raise alerts.
void setCriticalAlertHook(AlertHook hook);

}  // namespace qz
