#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

/// Lists a typed stream as text, passing on one line at a time without its line feed: every group with the offset of
/// its values, classes with their versions, the numbers of objects and the references to them. Makes no objects, so the
/// classes need not be known.
///
///     000010  @  #0 NSArray v0 : NSObject v0
///     000028    i  2
///     000029    @  #3 NSString v1 : NSObject v0
///     000039      +  "Title"
///     000041    @  -> #3 NSString v1
///
/// Superclasses are shown where their class first occurs. Long texts, and lines deeper than 32 levels, are abbreviated.
/// Returns false, with one line in `error`, if the stream is damaged; the lines before the damage have been passed on.
bool listTypedStream(const NSData& data, const std::function<void(std::string_view line)>& line,
                     std::string* error = nullptr);

}  // namespace qz
