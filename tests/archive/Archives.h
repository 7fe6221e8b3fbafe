#pragma once

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "tests/support/Palettes.h"

namespace qz::test {

/// A palette with annotations of these names, the first of priority 1.
inline Ref<QzAnnoPalette> paletteOf(std::initializer_list<const char*> names) {
    const Ref<QzAnnoPalette> palette = paletteWithGlobals({});
    for (const char* name : names) addAnnotation(*palette, name, {});
    return palette;
}

inline Ref<QzAnnoKey> keyIn(const QzAnnoPalette& palette, const char* name) {
    return palette.findAnnoKey(NSString::stringWithUTF8String(name));
}

/// Reads an annotated string with these token tables; any error fails the test.
inline Ref<QzAnnoString> readString(const Ref<NSData>& data, const std::vector<Ref<QzTokenTable>>& tables,
                                    std::string* error = nullptr) {
    return std::dynamic_pointer_cast<QzAnnoString>(QzTokeningUnarchiver::unarchiveObjectWithData(data, tables, error));
}

}  // namespace qz::test
