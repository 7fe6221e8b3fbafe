#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qz {

/// Tracks the depth and size of the graph of coded objects. Writer and reader both keep one, so they refuse the same
/// graphs.
///
/// Operations return false beyond a limit, and `refusal()` then says which.
class CodedGraph {
public:
    /// The size of an object with everything it holds.
    struct Extent {
        uint32_t height = 1;
        uint32_t unfolded = 1;
    };

    /// Begins a new object, inside those that have not ended.
    bool begin();
    /// Ends the innermost object and makes it part of the one around it.
    bool end();
    /// Makes the innermost object, if there is one, refer to an object that has ended.
    bool refer(Extent extent);
    /// Notes a null object.
    void passNone() { last_ = {0, 0}; }
    /// Counts storing the object that was last ended or referred to as a key beside `entries` others.
    bool countKey(size_t entries);

    /// The extent of the object that was last ended or referred to.
    Extent last() const { return last_; }
    const std::string& refusal() const { return refusal_; }

private:
    bool addPart(Extent part);

    std::vector<Extent> open_;
    Extent last_;
    uint64_t comparisons_ = 0;
    std::string refusal_;
};

}  // namespace qz
