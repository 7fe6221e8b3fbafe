#pragma once

#include <cstddef>
#include <cstdint>

#include "QzAnno/platform/foundation/Limits.h"

/// What a typed stream may ask of its reader. The archiver keeps to the same limits of the graph, so that whatever is
/// written can be read; the largest stream known nests 26 objects.
namespace qz::TypedStreamLimits {

/// Objects inside objects, through references too: reading, comparing and describing the objects recurses as deep as
/// that.
inline constexpr uint32_t kNestingMax = Limits::kNestingMax;
/// Classes above one class, up to the root.
inline constexpr uint32_t kSuperclassesMax = 64;
/// Characters of one type string.
inline constexpr size_t kTypesLengthMax = 1024;
/// Structures and arrays inside each other in a type string.
inline constexpr size_t kBracketDepthMax = 32;
/// Types walked over, those of structures and arrays included, in proportion to the bytes of the stream: a long type
/// string is paid for once and used by references of one byte.
inline constexpr uint64_t kStepsPerByteMax = 4;
/// The objects that one object would hold if shared ones were written out each time. Comparing and describing visits
/// them all.
inline constexpr uint32_t kUnfoldedObjectsMax = 1u << 24;
/// Objects compared with each other while keys that hold further objects are filed; their hashes say little.
inline constexpr uint64_t kKeyComparisonsMax = 1u << 26;
/// Memory of the tables and the decoded objects: so many bytes whatever the stream's size, and so many for each of its
/// bytes.
///@{
inline constexpr uint64_t kMemoryFree = 16u << 20;
inline constexpr uint64_t kMemoryPerByteMax = 16;
///@}

}  // namespace qz::TypedStreamLimits
