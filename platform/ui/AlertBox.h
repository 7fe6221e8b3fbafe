#pragma once

#include "QzAnno/platform/foundation/NSAlertPanel.h"

namespace qz {

/// Shows an alert as a message box and waits for the choice; on whatever thread it is called, the box opens on that of
/// the user interface. The default button counts as chosen when the box is closed, and once the application has ended.
NSAlertReturn showAlertBox(const AlertPanel& panel);

}  // namespace qz
