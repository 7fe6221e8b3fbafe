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
/// Numbers keep their kind: integers are written as integers, reals as the shortest decimal that reads back as the same
/// number. Dictionaries keep their order.
namespace NSPropertyListSerialization {

/// Elements nested deeper than this are refused, in reading and in writing.
inline constexpr int kDepthMax = Limits::kNestingMax;

/// Returns null, with the reason and the path to the culprit in `errorDescription`, if the object is or holds anything
/// that a property list cannot: another class, a key that is not a string, a character that XML does not allow, a date
/// outside the years 0 to 9999. Dates are written to the second.
Ref<NSData> dataFromPropertyList(const Ref<NSObject>& plist, NSPropertyListFormat format,
                                 std::string* errorDescription = nullptr);

/// Reads UTF-8 and UTF-16, with or without a byte-order mark, and any 8-bit encoding that the declaration names, but
/// never a DTD. The `plist` element around the value may be missing. Integers become 32-bit numbers if they fit, else
/// 64-bit, and reals become doubles. If a key occurs twice in a dictionary, the later value counts. Returns null for
/// anything else, with the place and the reason ("line 12, column 5: …") in `errorDescription`; for binary and old text
/// forms the error names the form and says how to convert it.
Ref<NSObject> propertyListFromData(const NSData& data, std::string* errorDescription = nullptr);

}  // namespace NSPropertyListSerialization

}  // namespace qz
