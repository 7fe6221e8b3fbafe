#pragma once

#include <string>
#include <vector>

#include "bench/peers/Case.h"

namespace qz::peers {

/// To standard output, a line a ratio.
void printTable(const std::vector<Ratio>& ratios);
/// An array of objects: work, ours, peer, oursMs, peerMs, ratio, bound.
std::string jsonOf(const std::vector<Ratio>& ratios);
/// An SVG picture: a bar a ratio on a logarithmic scale, its bound a mark.
std::string chartOf(const std::vector<Ratio>& ratios);

}  // namespace qz::peers
