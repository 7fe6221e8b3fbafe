#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/text/NSFont.h"

namespace qz {

// Font names of the form family-style.

/// Returns "family-style", or just the family if the style is null or empty. Returns null without a family, logging a
/// line if there is a style.
Ref<NSString> fontnameWithName(const Ref<NSString>& name, const Ref<NSString>& style);
/// The font of that name at the size in points; null if the library has no such font.
Ref<NSFont> fontWithName(const Ref<NSString>& name, const Ref<NSString>& style, float size,
                         const NSFont::Library& library);
/// The full name of the font that the attributes request, composed of family and style if they have no full name; null
/// if they name no font.
Ref<NSString> fontNameAskedFor(const NSDictionary& attributes);
/// The font's name up to the first hyphen; the whole name if there is none.
Ref<NSString> fontFontName(const NSFont& font);
/// The part between the first hyphen and the second; empty if there is no hyphen.
Ref<NSString> fontStyleName(const NSFont& font);

/// The same for a font name.
///@{
Ref<NSString> fontFontName(const NSString& fontName);
Ref<NSString> fontStyleName(const NSString& fontName);
///@}

}  // namespace qz
