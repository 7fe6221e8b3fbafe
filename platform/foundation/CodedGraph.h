#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qz {

/// How deep and how large the graph of coded objects becomes. Writer and reader keep it alike, so they refuse the same
/// graphs.
///
/// Operations return false past a limit, and `refusal()` then says which.
class CodedGraph {
public:
    /// Of an object with all that it holds.
    struct Extent {
        uint32_t height = 1;
        uint32_t unfolded = 1;
    };

    /// A new object begins, inside those that have not ended.
    bool begin();
    /// The innermost object ends, and becomes a part of the one around it.
    bool end();
    /// The innermost object, if there is one, refers to an object that has ended.
    bool refer(Extent extent);
    /// None takes part.
    void passNone() { last_ = {0, 0}; }
    /// The object that was ended or referred to last is filed as a key among so many.
    bool countKey(size_t entries);

    /// The extent of the object that was ended or referred to last.
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
