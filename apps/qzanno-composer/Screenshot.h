#pragma once

#include <string>
#include <vector>

class QWidget;

namespace qz::composer {

/// Writes a picture of the windows, each to the right of the one before, as a PNG file; false with the reason in
/// `error`.
bool writeScreenshot(const std::vector<QWidget*>& windows, const std::string& path, std::string& error);

}  // namespace qz::composer
