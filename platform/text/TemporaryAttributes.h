#pragma once

#include <functional>
#include <vector>

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Attributes over stretches of a text, most of which has none. Positions count UTF-16 units.
class TemporaryAttributes {
public:
    void add(const NSDictionary& attributes, Range range);
    void remove(const NSString& name, Range range);
    /// Returns an empty dictionary if there are none. `effectiveRange` receives the stretch around the index, which may
    /// reach past the text's end if it has no attributes.
    Ref<NSDictionary> attributesAtIndex(uint32_t index, Range* effectiveRange) const;

    /// Follows an edit, given as for `NSLayoutManager::textStorageEdited`: edited text loses its attributes, later text
    /// keeps them.
    void textEdited(Range editedRange, int64_t changeInLength);

private:
    struct Run {
        Range range;
        Ref<NSDictionary> attributes;
    };
    using Change = std::function<Ref<NSDictionary>(const Ref<NSDictionary>&)>;

    void change(Range range, const Change& change);
    /// Splits any run at the position, and returns the first run that begins there or later.
    std::vector<Run>::iterator cutAt(uint32_t position);

    /// In order, never empty in length or attributes; there may be gaps.
    std::vector<Run> runs_;
};

}  // namespace qz
