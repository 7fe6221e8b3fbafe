#pragma once

#include <string>

#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// The value of `NSPropertyListXMLFormat_v1_0`.
enum class NSPropertyListFormat { xml = 100 };

/// Property lists in their XML form, version 1.0: strings, numbers, dates, data, arrays and dictionaries with string
/// keys.
///
/// Numbers keep their kind: integers are written as such, reals in the shortest decimal that reads back as the same
/// number. Dictionaries are written and read in their own order.
namespace NSPropertyListSerialization {

/// Elements nested deeper than this are refused, both ways.
inline constexpr int kDepthMax = Limits::kNestingMax;

/// None, with the reason and the way to the culprit in `errorDescription`, for an object that is or holds something a
/// property list cannot: another class, a key that is no string, a character that XML cannot hold, a date outside the
/// years 0 to 9999. Dates are written to the second.
Ref<NSData> dataFromPropertyList(const Ref<NSObject>& plist, NSPropertyListFormat format,
                                 std::string* errorDescription = nullptr);

/// Reads UTF-8 and UTF-16 with or without byte-order mark and whatever 8-bit encodings the declaration may name, never
/// a DTD; the value may stand without the `plist` element around it. Integers become 32-bit numbers where they fit,
/// else 64-bit ones, and reals become doubles. Of a key that comes twice in a dictionary, the later value holds. None,
/// with the reason and where it stands ("line 12, column 5: …") in `errorDescription`, for anything else; the error for
/// binary and old text forms names them and says how to convert them.
Ref<NSObject> propertyListFromData(const NSData& data, std::string* errorDescription = nullptr);

}  // namespace NSPropertyListSerialization

}  // namespace qz
