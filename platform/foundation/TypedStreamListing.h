#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSData.h"

namespace qz {

/// Hands out a typed stream as text, line by line and without line feeds: every group with the offset of its values,
/// classes with their versions, the numbers of objects and the references to them. No object is made, so classes need
/// not be known.
///
///     000010  @  #0 NSArray v0 : NSObject v0
///     000028    i  2
///     000029    @  #3 NSString v1 : NSObject v0
///     000039      +  "Title"
///     000041    @  -> #3 NSString v1
///
/// Superclasses stand where their class comes first. Long texts, and lines deeper than 32 levels, are shown in part.
/// False, with one line in `error`, where the stream is damaged; the lines before that have been handed out.
bool listTypedStream(const NSData& data, const std::function<void(std::string_view line)>& line,
                     std::string* error = nullptr);

}  // namespace qz
