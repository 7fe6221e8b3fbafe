#include "apps/qzanno/PaletteFile.h"

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno_AnnotatedTextFramework/palette/PaletteFaults.h"
#include "platform/foundation/NSPropertyListSerialization.h"

namespace qz::tool {
namespace {

/// The property list to look for faults in.
Ref<NSObject> propertyListOf(const Ref<NSData>& file) {
    if (!isArchive(*file)) return NSPropertyListSerialization::propertyListFromData(*file);
    const Ref<QzAnnoPalette> palette = paletteFromData(file);
    const Ref<NSData> list = palette ? palette->pListData() : nullptr;
    return list ? NSPropertyListSerialization::propertyListFromData(*list) : nullptr;
}

}  // namespace

Ref<QzAnnoPalette> loadPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts,
                               Diagnostics& diagnostics, Ref<NSData>* bytes) {
    std::string reason;
    const Ref<NSData> file = path.empty() ? nullptr : readFile(path, &reason);
    Ref<QzAnnoPalette> palette = path.empty() ? builtInPalette()
                                 : file       ? paletteFromData(file, &reason, fonts)
                                              : nullptr;
    if (palette)
        palette->setFontLibrary(fonts);
    else
        diagnostics.error(path, reason);
    if (bytes) *bytes = file;
    return palette;
}

size_t reportFaults(const std::string& path, FontLibrary* fonts, Diagnostics& diagnostics) {
    const Ref<NSData> file = path.empty() ? nullptr : readFile(path, nullptr);
    const Ref<NSObject> plist = file ? propertyListOf(file) : nullptr;
    if (!plist) return 0;
    size_t count = 0;
    for (const PaletteFault& fault : faultsOfPropertyList(*plist, fonts)) {
        diagnostics.warning(path, quoted(fault.annotationName) + ": " + fault.message);
        ++count;
    }
    return count;
}

std::string paletteName(const std::string& path) {
    return path.empty() ? "built-in palette" : path;
}

}  // namespace qz::tool
