#pragma once

#include <memory>

#include <fontconfig/fontconfig.h>

namespace qz {

struct FontconfigRelease {
    void operator()(FcConfig* config) const { FcConfigDestroy(config); }
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
    void operator()(FcObjectSet* objects) const { FcObjectSetDestroy(objects); }
};
template <class T>
using FontconfigRef = std::unique_ptr<T, FontconfigRelease>;

inline const FcChar8* fontconfigText(const char* utf8) {
    return reinterpret_cast<const FcChar8*>(utf8);
}

inline const char* textOf(const FcChar8* fontconfigText) {
    return reinterpret_cast<const char*>(fontconfigText);
}

}  // namespace qz
