#pragma once

#include <cstddef>
#include <cstdint>

#include "QzAnno/platform/foundation/Limits.h"

/// Limits on what a typed stream may demand of its reader. The archiver observes the same limits on the graph, so
/// whatever is written can be read; the deepest known stream nests 26 objects.
namespace qz::TypedStreamLimits {

/// Nesting depth of objects, including through references: reading, comparing and describing recurse that deep.
inline constexpr uint32_t kNestingMax = Limits::kNestingMax;
/// Superclasses of one class, up to the root.
inline constexpr uint32_t kSuperclassesMax = 64;
/// Characters of one type string.
inline constexpr size_t kTypesLengthMax = 1024;
/// Nesting depth of structures and arrays in a type string.
inline constexpr size_t kBracketDepthMax = 32;
/// Types visited per byte of the stream, including those in structures and arrays: a long type string is stored once
/// and used by references of one byte.
inline constexpr uint64_t kStepsPerByteMax = 4;
/// Objects that one object would hold if shared ones were counted each time. Comparing and describing visit them all.
inline constexpr uint32_t kUnfoldedObjectsMax = 1u << 24;
/// Objects compared while storing keys that hold further objects, since their hashes say little.
inline constexpr uint64_t kKeyComparisonsMax = 1u << 26;
/// Memory for the tables and the decoded objects: a fixed number of bytes, and a number per byte of the stream.
///@{
inline constexpr uint64_t kMemoryFree = 16u << 20;
inline constexpr uint64_t kMemoryPerByteMax = 16;
///@}

}  // namespace qz::TypedStreamLimits
