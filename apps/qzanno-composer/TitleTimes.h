#pragma once

#include <optional>
#include <vector>

#include "apps/qzanno-composer/TitleFile.h"

class QString;

namespace qz::composer {

/// "00:01:02.500"
QString clock(double seconds);
/// Seconds of a time as people write it: "1:02.5", "62,5", "0:01:02.500". None for anything else.
std::optional<double> secondsOfClock(const QString& text);

/// Gives the title, which follows the one before, times to be read in: behind that one, and until the next at most when
/// there is room.
void giveTimes(std::vector<Title>& titles, size_t title);

}  // namespace qz::composer
