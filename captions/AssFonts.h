#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// A font as styles of SubStation Alpha name it.
struct AssFont {
    std::string family;
    /// 400 regular, 700 bold.
    int weight = 400;
    bool isItalic = false;
    friend bool operator==(const AssFont&, const AssFont&) = default;
};

AssFont assFontOf(const NSFont& font);

/// The name of the library's font of that family, bold or italic, or else the name that such a font would have.
Ref<NSString> fontNameOf(const AssFont& font, const NSFont::Library& library);

/// How high a line of the font is to SubStation Alpha, for a font of one point: usWinAscent and usWinDescent of its
/// OS/2 table, as players have it from Windows; what serves in their place for a font without.
double assLineHeightOf(const NSFont& font);

}  // namespace qz
