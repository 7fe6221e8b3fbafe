// Property lists: any list read must be writable and read back the same; a palette read must be valid.
#include "QzAnno/palette/QzAnnoPalette.h"
#include "fuzz/Fuzzing.h"
#include "platform/foundation/NSPropertyListSerialization.h"

namespace {

using namespace qz;
using fuzz::require;

Ref<NSData> xmlOf(const Ref<NSObject>& list) {
    return NSPropertyListSerialization::dataFromPropertyList(list, NSPropertyListFormat::xml);
}

void checkPalette(const NSData& file) {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::paletteFromPListData(file);
    if (!palette) return;
    std::string error;
    const Ref<NSData> written = palette->pListData(&error);
    // A name may contain a character that XML does not allow; anything else read can be written.
    require(written || !error.empty(), "a palette that is not written has a reason");
    if (!written) return;
    const Ref<QzAnnoPalette> again = QzAnnoPalette::paletteFromPListData(*written);
    require(again && again->maxPriority() == palette->maxPriority(), "a palette comes back with its annotations");
    const Ref<NSData> writtenAgain = again->pListData();
    require(writtenAgain && writtenAgain->view() == written->view(), "a palette comes back as it was");
}

void check(const uint8_t* data, size_t size) {
    const Ref<NSData> file = NSData::dataWithBytes(fuzz::textOf(data, size));
    std::string error;
    const Ref<NSObject> list = NSPropertyListSerialization::propertyListFromData(*file, &error);
    require(list || (!error.empty() && error.find('\n') == std::string::npos), "a refusal is one line");
    if (!list) return;
    if (const Ref<NSData> written = xmlOf(list)) {
        const Ref<NSObject> again = NSPropertyListSerialization::propertyListFromData(*written, &error);
        require(again != nullptr, "what was written can be read");
        const Ref<NSData> writtenAgain = xmlOf(again);
        require(writtenAgain && writtenAgain->view() == written->view(), "what was written comes back as it was");
    }
    checkPalette(*file);
}

}  // namespace

QZ_FUZZ(check)
