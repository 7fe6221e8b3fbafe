#pragma once

#include <cstddef>

namespace qz::peers {

/// In a process of its own: draws a blank title, which finds the font, then the two-line title, and prints the
/// milliseconds that the second took and by how many KiB the process has grown at most since before the first.
void drawFirstFrame(size_t peer);

}  // namespace qz::peers
