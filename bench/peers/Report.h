#pragma once

#include <string>
#include <vector>

#include "bench/peers/Case.h"

namespace qz::peers {

/// Prints one line per ratio to standard output.
void printTable(const std::vector<Ratio>& ratios);
/// An array of objects: work, ours, peer, oursMs, peerMs, ratio, and bound if there is one.
std::string jsonOf(const std::vector<Ratio>& ratios);
/// An SVG picture with one bar per ratio on a logarithmic scale, and a mark for its bound; green if within it.
std::string chartOf(const std::vector<Ratio>& ratios);

}  // namespace qz::peers
