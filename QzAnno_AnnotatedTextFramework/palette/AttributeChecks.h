#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Checks a value in its property-list form under a name of the attribute vocabulary. Appends one message for each
/// fault, with what the library does about it. Values under unknown names are not checked.
void checkAttribute(const NSString& name, const Ref<NSObject>& value, std::vector<std::string>& messages);

/// The kind of a property-list value, for messages: "a string", "a colour", "a number".
std::string kindOfStoredValue(const NSObject& value);

}  // namespace qz
