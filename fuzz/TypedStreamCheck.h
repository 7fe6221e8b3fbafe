#pragma once

#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/TypedStreamListing.h"

namespace qz::test {

/// Reads a stream of arbitrary bytes. A readable object must be writable, and then be read and written the same again.
/// Returns the error, or an empty string. `wasRead` receives whether there was an object.
inline std::string checkTypedStream(std::string_view bytes, bool* wasRead = nullptr) {
    const Ref<NSData> data = NSData::dataWithBytes(bytes);
    std::string error;
    listTypedStream(
        *data, [](std::string_view) {}, &error);
    const Ref<NSObject> object = NSUnarchiver::unarchiveObjectWithData(data);
    if (wasRead) *wasRead = object != nullptr;
    if (!object) return {};
    const Ref<NSData> written = NSArchiver::archivedDataWithRootObject(object, &error);
    if (!written) return "what was read cannot be written: " + error;
    if (!listTypedStream(
            *written, [](std::string_view) {}, &error)) {
        return "what was written cannot be listed: " + error;
    }
    const Ref<NSObject> again = NSUnarchiver::unarchiveObjectWithData(written, &error);
    if (!again) return "what was written cannot be read: " + error;
    const Ref<NSData> writtenAgain = NSArchiver::archivedDataWithRootObject(again, &error);
    if (!writtenAgain) return "what was written and read cannot be written: " + error;
    return writtenAgain->isEqual(*written) ? "" : "what was written is read as something else";
}

}  // namespace qz::test
