#pragma once

#include <cstddef>
#include <cstdint>

/// Limits on untrusted files and texts, in one place. Anything beyond a limit is refused with a one-line reason before
/// the memory is allocated. docs/limits.md describes what happens at each limit; TypedStreamLimits.h has the limits
/// that concern archives only.
namespace qz::Limits {

/// Size of a file that is read into memory whole.
inline constexpr uint64_t kFileBytesMax = uint64_t{256} << 20;
/// UTF-16 units in a title or cue read from a file. Strings made by a host may have up to 2^31 - 1.
inline constexpr uint32_t kTitleUnitsMax = 1u << 24;
/// Annotations in a palette, not counting the global one. A title stores a byte for each combination of unit and
/// annotation.
inline constexpr int32_t kAnnotationsMax = 65536;
/// Nesting depth of objects in archives and property lists, read or written. Objects that a host nests deeper are
/// neither compared nor described below this depth.
inline constexpr uint32_t kNestingMax = 512;
/// Size of one bitmap allocated by the library: 16384 x 16384 RGBA pixels.
inline constexpr uint64_t kBitmapBytesMax = uint64_t{1} << 30;
/// Font size in points; larger fonts are drawn at this size.
inline constexpr float kFontPointsMax = 10000.0f;
/// Absolute value of a style's or box's length, in points. Anything larger is a mistake and would swamp the other
/// lengths.
inline constexpr float kLengthMax = 1e6f;
/// Bytes of drawn glyphs that a pipeline caches unless its host sets another limit.
inline constexpr uint64_t kGlyphCacheBytes = uint64_t{64} << 20;

}  // namespace qz::Limits
