#pragma once

#include <functional>
#include <vector>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Attributes that lie over stretches of a text; most of it has none. Positions count UTF-16 units.
class TemporaryAttributes {
public:
    void add(const NSDictionary& attributes, Range range);
    void remove(const NSString& name, Range range);
    /// The empty dictionary where there are none. `effectiveRange` receives the stretch around the index; without
    /// attributes it may reach past the text's end.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* effectiveRange) const;

    /// Keeps up with an edit, as `NSLayoutManager::textStorageEdited` is told of it: edited text has none, text behind
    /// it keeps its own.
    void textEdited(Range editedRange, int64_t changeInLength);

private:
    struct Run {
        Range range;
        Ref<NSDictionary> attributes;
    };
    using Change = std::function<Ref<NSDictionary>(const Ref<NSDictionary>&)>;

    void change(Range range, const Change& change);
    /// Makes a run begin at the position, if any holds it, and returns the first one that begins there or behind.
    std::vector<Run>::iterator cutAt(uint32_t position);

    /// In order, none empty in length or attributes; there may be gaps.
    std::vector<Run> runs_;
};

}  // namespace qz
