#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"

namespace qz {
namespace {

void encodeBits(const NSObject& object, NSArchiver& archiver) {
    const auto& bits = static_cast<const QzAnnoBits&>(object);
    archiver.encodeUnsignedInt(bits.size());
    const std::string_view bytes = bits.bytes();
    archiver.encodeChars({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

Ref<NSObject> decodeBits(NSUnarchiver& unarchiver) {
    if (unarchiver.versionForClassName("QzAnnoBits") != 0) return {};
    const std::optional<uint32_t> size = unarchiver.decodeUnsignedInt();
    if (!size) return {};
    // Do not trust the size; allocate only once the positions have been read.
    const std::optional<std::string_view> bytes = unarchiver.decodeArrayOfObjCType('c', *size);
    if (!bytes || !unarchiver.countMemory(bytes->size())) return {};
    return QzAnnoBits::initWithBytes(*bytes);
}

const CodedClassRegistration registration({.name = "QzAnnoBits", .encode = encodeBits, .decode = decodeBits});

}  // namespace
}  // namespace qz
