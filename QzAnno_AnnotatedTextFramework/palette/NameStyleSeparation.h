#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

// Font names of the form family-style.

/// "family-style"; the family alone without a style or with an empty one. Without a family null, and a log line for a
/// style that stands alone.
Ref<NSString> fontnameWithName(const Ref<NSString>& name, const Ref<NSString>& style);
/// The font of that name at the size in points; null if the library has no such font.
Ref<NSFont> fontWithName(const Ref<NSString>& name, const Ref<NSString>& style, float size,
                         const NSFont::Library& library);
/// The full name of the font that attributes ask for, composed from family and style if they give no full name; null if
/// they name no font.
Ref<NSString> fontNameAskedFor(const NSDictionary& attributes);
/// What stands before the first hyphen of the font's name; the whole name when it has none.
Ref<NSString> fontFontName(const NSFont& font);
/// What stands between the first hyphen and the second; empty when there is none.
Ref<NSString> fontStyleName(const NSFont& font);

/// The same for the bare name of a font.
///@{
Ref<NSString> fontFontName(const NSString& fontName);
Ref<NSString> fontStyleName(const NSString& fontName);
///@}

}  // namespace qz
