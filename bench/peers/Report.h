#pragma once

#include <string>
#include <vector>

#include "bench/peers/Case.h"

namespace qz::peers {

/// To standard output, a line a ratio.
void printTable(const std::vector<Ratio>& ratios);
/// An array of objects: work, ours, peer, oursMs, peerMs, ratio, and bound where there is one.
std::string jsonOf(const std::vector<Ratio>& ratios);
/// An SVG picture: a bar a ratio on a logarithmic scale, its bound a mark; green within it.
std::string chartOf(const std::vector<Ratio>& ratios);

}  // namespace qz::peers
