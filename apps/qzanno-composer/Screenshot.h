#pragma once

#include <string>
#include <vector>

class QWidget;

namespace qz::composer {

/// Writes a picture of the windows, side by side from left to right, as a PNG file. Returns false, with the reason in
/// `error`, on failure.
bool writeScreenshot(const std::vector<QWidget*>& windows, const std::string& path, std::string& error);

}  // namespace qz::composer
