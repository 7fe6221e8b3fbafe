#pragma once

#include <cstddef>

namespace qz::peers {

/// Run in a separate process: draws a blank title, which finds the font, then the two-line title, and prints the
/// milliseconds for the second and the peak growth of the process in KiB since before the first.
void drawFirstFrame(size_t peer);

}  // namespace qz::peers
