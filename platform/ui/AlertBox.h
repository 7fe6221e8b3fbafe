#pragma once

#include "QzAnno/platform/foundation/NSAlertPanel.h"

namespace qz {

/// Shows an alert as a message box and waits for the choice. May be called on any thread; the box opens on the user
/// interface's. Closing the box counts as the default button, and so does a call after the application has ended.
NSAlertReturn showAlertBox(const AlertPanel& panel);

}  // namespace qz
