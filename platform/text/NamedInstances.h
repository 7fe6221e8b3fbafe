#pragma once

#include <string>
#include <vector>

namespace qz {

/// One of the places in the design space of a variable font that the font gives a name.
struct NamedInstance {
    int number = 0;          ///< from 1, as in the upper half of a face's index
    bool isDefault = false;  ///< the place where the font is without variation
    std::string styleName;   ///< English where there is such a name
    std::string postScriptName;
};

/// Those of a face of a file; none for a font that does not vary or cannot be read. Where the font gives an instance no
/// PostScript name it is made as Adobe's Technical Note 5902 says: the family's prefix, a hyphen, the style's letters
/// and digits.
std::vector<NamedInstance> namedInstances(const std::string& path, int face);

}  // namespace qz
