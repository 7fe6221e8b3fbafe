#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Appends what is wrong with a value, in its property-list form, that stands under a name of the attribute vocabulary:
/// one message for each fault, with what the library does about it. Nothing is wrong under names that it does not know.
void checkAttribute(const NSString& name, const Ref<NSObject>& value, std::vector<std::string>& messages);

/// "a string", "a colour", "a number": what a property-list value is, for messages.
std::string kindOfStoredValue(const NSObject& value);

}  // namespace qz
