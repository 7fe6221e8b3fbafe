#pragma once

#include <vector>

#include "apps/qzanno-composer/TitleFile.h"

namespace qz::composer {

/// Gives the title enough time to be read, after the previous title and, if there is room, ending before the next.
void giveTimes(std::vector<Title>& titles, size_t title);

}  // namespace qz::composer
