#pragma once

#include <optional>
#include <vector>

#include "apps/qzanno-composer/TitleFile.h"

class QString;

namespace qz::composer {

/// "00:01:02.500"
QString clock(double seconds);
/// Parses a time as people write it, in seconds: "1:02.5", "62,5", "0:01:02.500". Returns no value for anything else.
std::optional<double> secondsOfClock(const QString& text);

/// Gives the title enough time to be read, after the previous title and, if there is room, ending before the next.
void giveTimes(std::vector<Title>& titles, size_t title);

}  // namespace qz::composer
