#include "QzAnno/archive/PaletteData.h"

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"

namespace qz {
namespace {

Ref<QzAnnoPalette> paletteOfArchive(const Ref<NSData>& data, std::string& reason,
                                    const std::shared_ptr<FontLibrary>& fontLibrary) {
    const Ref<NSUnarchiver> unarchiver = NSUnarchiver::initForReadingWithData(data);
    unarchiver->setContext(fontLibrary);
    const Ref<NSObject> object = unarchiver->decodeObject();
    auto palette = std::dynamic_pointer_cast<QzAnnoPalette>(object);
    if (palette) return palette;
    // Only other unarchivers read keys, and their names would mean nothing to the person who chose the file.
    if (unarchiver->versionForClassName("QzAnnoKey"))
        reason = "holds titles, not a palette";
    else if (unarchiver->hasFailed())
        reason = unarchiver->error();
    else
        reason = object ? "holds an object of class " + object->className() + ", not a palette"
                        : "holds no palette of a version that can be read";
    return {};
}

}  // namespace

bool isArchive(const NSData& data) {
    const std::string_view signature = data.view().substr(0, 13);
    return signature.ends_with("\x0bstreamtyped") || signature.ends_with("\x0btypedstream");
}

Ref<NSData> dataOfPalette(const Ref<QzAnnoPalette>& palette, std::string_view fileName, std::string* errorDescription) {
    if (!palette) {
        if (errorDescription) *errorDescription = "the palette is null";
        return {};
    }
    return fileName.ends_with(".annopalette") ? NSArchiver::archivedDataWithRootObject(palette, errorDescription)
                                              : palette->pListData(errorDescription);
}

Ref<QzAnnoPalette> paletteFromData(const Ref<NSData>& data, std::string* errorDescription,
                                   const std::shared_ptr<FontLibrary>& fontLibrary) {
    if (!data) return {};
    std::string reason;
    const Ref<QzAnnoPalette> palette = isArchive(*data) ? paletteOfArchive(data, reason, fontLibrary)
                                                        : QzAnnoPalette::paletteFromPListData(*data, &reason);
    if (palette)
        palette->setFontLibrary(fontLibrary);
    else if (errorDescription)
        *errorDescription = std::move(reason);
    return palette;
}

}  // namespace qz
