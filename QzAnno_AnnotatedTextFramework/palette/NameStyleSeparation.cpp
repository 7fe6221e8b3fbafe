#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"

#include <algorithm>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {

Ref<NSString> fontnameWithName(const Ref<NSString>& name, const Ref<NSString>& style) {
    if (!style || style->length() == 0) return name;
    if (!name) {
        NSLog("The style \"%@\" has no font family and names no font\n", {style});
        return {};
    }
    return NSString::stringWithCharacters(name->characters() + u'-' + style->characters());
}

Ref<NSFont> fontWithName(const Ref<NSString>& name, const Ref<NSString>& style, float size,
                         const NSFont::Library& library) {
    return name ? NSFont::fontWithName(*fontnameWithName(name, style), size, library) : Ref<NSFont>();
}

Ref<NSString> fontNameAskedFor(const NSDictionary& attributes) {
    if (auto fullName = attributes.objectForKey<NSString>(*QzFontAttribute)) return fullName;
    const auto name = attributes.objectForKey<NSString>(*QzFontNameAttribute);
    return name ? fontnameWithName(name, attributes.objectForKey<NSString>(*QzFontStyleAttribute)) : nullptr;
}

Ref<NSString> fontFontName(const NSFont& font) {
    return fontFontName(*font.fontName());
}

Ref<NSString> fontStyleName(const NSFont& font) {
    return fontStyleName(*font.fontName());
}

Ref<NSString> fontFontName(const NSString& fontName) {
    const std::u16string& characters = fontName.characters();
    return NSString::stringWithCharacters(characters.substr(0, characters.find(u'-')));
}

Ref<NSString> fontStyleName(const NSString& fontName) {
    const std::u16string& characters = fontName.characters();
    const size_t hyphen = characters.find(u'-');
    if (hyphen == std::u16string::npos) return NSString::string();
    const size_t start = hyphen + 1;
    const size_t end = std::min(characters.find(u'-', start), characters.size());
    return NSString::stringWithCharacters(characters.substr(start, end - start));
}

}  // namespace qz
