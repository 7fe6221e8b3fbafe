#pragma once

#include <string>
#include <vector>

namespace qz {

/// A named position in the design space of a variable font.
struct NamedInstance {
    int number = 0;          ///< from 1, as in the upper half of a face's index
    bool isDefault = false;  ///< the default position, without variation
    std::string styleName;   ///< in English if available
    std::string postScriptName;
};

/// The instances of a face in a file; empty if the font is not variable or cannot be read. An instance without a
/// PostScript name gets one as in Adobe's Technical Note 5902: the family's prefix, a hyphen, the style's letters and
/// digits.
std::vector<NamedInstance> namedInstances(const std::string& path, int face);

}  // namespace qz
