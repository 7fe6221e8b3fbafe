#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

/// A font as named in SubStation Alpha styles.
struct AssFont {
    std::string family;
    /// 400 is regular, 700 bold.
    int weight = 400;
    bool isItalic = false;
    friend bool operator==(const AssFont&, const AssFont&) = default;
};

AssFont assFontOf(const NSFont& font);

/// The name of the library's font of that family, bold or italic, or else the name that it would have.
Ref<NSString> fontNameOf(const AssFont& font, const NSFont::Library& library);

/// The line height of the font in SubStation Alpha, at one point: usWinAscent and usWinDescent of its OS/2 table, as in
/// players following Windows, or a substitute for fonts without them.
double assLineHeightOf(const NSFont& font);

}  // namespace qz
