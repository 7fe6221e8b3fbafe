#include "QzAnno/archive/QzAnnoArchiver.h"

namespace qz {

Ref<QzAnnoArchiver> QzAnnoArchiver::initWithAnnoPalette(const Ref<QzAnnoPalette>& annoPalette) {
    return Ref<QzAnnoArchiver>(new QzAnnoArchiver(annoPalette));
}

Ref<NSData> QzAnnoArchiver::archivedDataWithRootObject(const Ref<NSObject>& rootObject,
                                                       const Ref<QzAnnoPalette>& annoPalette, std::string* error) {
    const Ref<QzAnnoArchiver> archiver = initWithAnnoPalette(annoPalette);
    archiver->encodeRootObject(rootObject);
    if (error && archiver->hasFailed()) *error = archiver->error();
    return archiver->archiverData();
}

Ref<QzAnnoUnarchiver> QzAnnoUnarchiver::initForReadingWithData(const Ref<NSData>& data,
                                                               const Ref<QzAnnoPalette>& annoPalette) {
    return Ref<QzAnnoUnarchiver>(new QzAnnoUnarchiver(data, annoPalette));
}

Ref<NSObject> QzAnnoUnarchiver::unarchiveObjectWithData(const Ref<NSData>& data, const Ref<QzAnnoPalette>& annoPalette,
                                                        std::string* error) {
    const Ref<QzAnnoUnarchiver> unarchiver = initForReadingWithData(data, annoPalette);
    const Ref<NSObject> object = unarchiver->decodeObject();
    if (error && unarchiver->hasFailed()) *error = unarchiver->error();
    return object;
}

}  // namespace qz
