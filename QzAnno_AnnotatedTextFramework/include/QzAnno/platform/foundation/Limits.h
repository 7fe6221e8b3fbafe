#pragma once

#include <cstddef>
#include <cstdint>

/// What files and texts of strangers may ask for, in one place. Beyond a limit there is a refusal with a line that says
/// so, before the memory is taken. docs/limits.md says what happens at each; TypedStreamLimits.h has those of archives
/// alone.
namespace qz::Limits {

/// A file that is read whole.
inline constexpr uint64_t kFileBytesMax = uint64_t{256} << 20;
/// UTF-16 units of a title or a cue that is read from a file. Strings that a host makes are bounded by 2^31 - 1.
inline constexpr uint32_t kTitleUnitsMax = 1u << 24;
/// Annotations of a palette above the global one. A title holds a byte for each of its units and annotations.
inline constexpr int32_t kAnnotationsMax = 65536;
/// Objects inside objects, in archives and in property lists, both ways; what a host nests deeper is not compared or
/// described further.
inline constexpr uint32_t kNestingMax = 512;
/// Pixels of one bitmap of the library's own: 16384 x 16384 of RGBA.
inline constexpr uint64_t kBitmapBytesMax = uint64_t{1} << 30;
/// Points; a larger font is drawn at this size.
inline constexpr float kFontPointsMax = 10000.0f;
/// Points, to either side of zero. A length of a style or of a box beyond it is a mistake, and would only drown the
/// others.
inline constexpr float kLengthMax = 1e6f;
/// Drawn glyphs that a pipeline keeps, unless its host sets another bound.
inline constexpr uint64_t kGlyphCacheBytes = uint64_t{64} << 20;

}  // namespace qz::Limits
