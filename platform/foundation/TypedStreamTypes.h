#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/TypedStreamLimits.h"

namespace qz {

/// How the values of an integer code are stored; c, C and B are raw bytes.
struct IntegerForm {
    int bits;
    bool isSigned;

    int64_t least() const { return isSigned ? INT64_MIN >> (64 - bits) : 0; }
    uint64_t greatest() const { return UINT64_MAX >> (64 - bits + (isSigned ? 1 : 0)); }
};

/// No value if the code is not an integer's.
std::optional<IntegerForm> integerFormOf(char code);
inline bool isRawByte(char code) {
    return code == 'c' || code == 'C' || code == 'B';
}

/// The parsed type string of one value group.
class EncodedTypes {
public:
    /// Returns no value, with the reason in `error`, if the string is malformed or beyond the limits.
    static std::optional<EncodedTypes> parse(std::string_view text, std::string* error);

    /// The fewest bytes that the group's values can take.
    uint64_t leastBytes() const { return leastBytes_; }
    size_t nodeCount() const { return nodes_.size(); }

private:
    friend class TypeLeaves;
    class Parser;

    // In string order; the contents of a bracket follow it, up to the node `end`.
    struct Node {
        char code;
        uint32_t count;  // elements of an array
        uint32_t end;
    };

    std::vector<Node> nodes_;
    uint64_t leastBytes_ = 0;
};

/// Iterates over the values of a group, including the fields of structures and elements of arrays. The types must
/// outlive it.
class TypeLeaves {
public:
    explicit TypeLeaves(const EncodedTypes& types);

    struct Leaf {
        char code;       ///< '[' for an array of c or C, which is one leaf
        uint32_t count;  ///< the bytes of such an array
    };
    /// The next value; no value after the last.
    std::optional<Leaf> next();
    /// The number of types visited so far, including brackets.
    uint64_t steps() const { return steps_; }

private:
    struct Bracket {
        uint32_t first;
        uint32_t end;
        uint32_t roundsLeft;
    };

    const EncodedTypes& types_;
    std::array<Bracket, TypedStreamLimits::kBracketDepthMax> open_;
    size_t depth_ = 0;
    uint32_t node_ = 0;
    uint64_t steps_ = 0;
};

}  // namespace qz
