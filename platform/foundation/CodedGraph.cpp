#include "platform/foundation/CodedGraph.h"

#include <algorithm>

#include "platform/foundation/TypedStreamLimits.h"

namespace qz {

using namespace TypedStreamLimits;

bool CodedGraph::begin() {
    if (open_.size() == kNestingMax) {
        refusal_ = "more than " + std::to_string(kNestingMax) + " objects inside each other";
        return false;
    }
    open_.emplace_back();
    return true;
}

bool CodedGraph::end() {
    last_ = open_.back();
    open_.pop_back();
    return addPart(last_);
}

bool CodedGraph::refer(Extent extent) {
    last_ = extent;
    if (open_.size() + extent.height <= kNestingMax) return addPart(extent);
    refusal_ = "more than " + std::to_string(kNestingMax) + " objects inside each other, by references";
    return false;
}

bool CodedGraph::addPart(Extent part) {
    if (open_.empty()) return true;
    Extent& whole = open_.back();
    whole.height = std::max(whole.height, part.height + 1);
    whole.unfolded += part.unfolded;
    if (whole.unfolded <= kUnfoldedObjectsMax) return true;
    refusal_ = "an object that holds more than " + std::to_string(kUnfoldedObjectsMax) +
               " others when shared ones count each time";
    return false;
}

bool CodedGraph::countKey(size_t entries) {
    // A key that holds no objects is found by its hash.
    if (last_.unfolded <= 1) return true;
    comparisons_ += uint64_t{last_.unfolded} * entries;
    if (comparisons_ <= kKeyComparisonsMax) return true;
    refusal_ = "too many dictionary keys or set members that hold further objects";
    return false;
}

}  // namespace qz
