// Archives of annotated strings and palettes: objects read must be valid, so that they can be queried, edited,
// formatted, written, and read back unchanged.
#include <cstdio>
#include <cstdlib>

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "fuzz/Fuzzing.h"

namespace qz {
namespace {

Ref<QzAnnoPalette> readersPalette() {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    for (const char* name : {"Bold", "Red"}) palette->createAnno(NSString::stringWithUTF8String(name));
    return palette;
}

void use(const QzAnnoString& string, const Ref<QzAnnoPalette>& palette) {
    const Ref<QzMutableAnnoString> edited = string.mutableCopy();
    edited->addFrameAnno(palette->annoKeyAtPriority(1));
    if (edited->length() > 0) edited->deleteCharactersInRange({0, 1});
    const Ref<QzAnnoStringFormatter> formatter = QzAnnoStringFormatter::init();
    formatter->setPalette(palette);
    formatter->attributedStringForObjectValue(edited);
}

void use(QzAnnoPalette& palette) {
    palette.setUndoManager(NSUndoManager::init());
    palette.pListData();
    while (palette.maxPriority() > 0 && palette.removeAnno(palette.annoKeyAtPriority(1))) continue;
    fuzz::require(palette.maxPriority() == 0, "every annotation can be removed");
}

void use(const Ref<NSObject>& object, const Ref<QzAnnoPalette>& palette) {
    if (const auto* const string = dynamic_cast<const QzAnnoString*>(object.get())) use(*string, palette);
    if (auto* const read = dynamic_cast<QzAnnoPalette*>(object.get())) use(*read);
    const auto* const array = dynamic_cast<const NSArray*>(object.get());
    if (!array) return;
    for (const Ref<NSObject>& element : array->elements()) use(element, palette);
}

void check(std::string_view bytes) {
    const Ref<QzAnnoPalette> palette = readersPalette();
    std::string error;
    const Ref<NSObject> object =
        QzTokeningUnarchiver::unarchiveObjectWithData(NSData::dataWithBytes(bytes), {palette}, &error);
    if (!object) return;
    const Ref<NSData> written = QzTokeningArchiver::archivedDataWithRootObject(object, {palette}, &error);
    const Ref<NSObject> again =
        written ? QzTokeningUnarchiver::unarchiveObjectWithData(written, {palette}, &error) : nullptr;
    const Ref<NSData> writtenAgain =
        again ? QzTokeningArchiver::archivedDataWithRootObject(again, {palette}, &error) : nullptr;
    if (!writtenAgain || writtenAgain->view() != written->view()) {
        std::fprintf(stderr, "what was read and written comes back otherwise: %s\n", error.c_str());
        std::abort();
    }
    use(object, palette);
}

}  // namespace
}  // namespace qz

QZ_FUZZ([](const uint8_t* data, size_t size) { qz::check(qz::fuzz::textOf(data, size)); })
