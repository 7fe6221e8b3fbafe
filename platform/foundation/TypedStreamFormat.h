#pragma once

#include <cstdint>
#include <string_view>

/// The bytes shared by the reader and writer of typed streams.
namespace qz::TypedStreamFormat {

inline constexpr uint8_t kStreamVersion = 4;
inline constexpr uint32_t kSystemVersion = 1000;
inline constexpr std::string_view kLittleEndianSignature = "streamtyped";
inline constexpr std::string_view kBigEndianSignature = "typedstream";

// Head bytes. As signed bytes they are -127 to -121; from -110 on a head byte is the integer itself.
inline constexpr uint8_t kInteger16 = 0x81;
inline constexpr uint8_t kInteger32 = 0x82;
inline constexpr uint8_t kReal = 0x83;
inline constexpr uint8_t kNew = 0x84;
inline constexpr uint8_t kNil = 0x85;
inline constexpr uint8_t kEndOfObject = 0x86;
inline constexpr uint8_t kInteger64 = 0x87;
inline constexpr int64_t kLeastInHead = -110;
inline constexpr int64_t kGreatestInHead = 127;

/// The integer that refers to the first entry of a table.
inline constexpr int64_t kFirstReference = -110;

}  // namespace qz::TypedStreamFormat
