#pragma once

#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Positions of one annotation in a text: a growable row of set and clear positions.
///
/// A bit set does not know its text's length; positions past the end keep their state and reappear when text is
/// appended. The row grows whenever a position past its end is touched, with new positions repeating the last one, and
/// never shrinks. A range that ends beyond 2^32 - 2 cannot be held and changes nothing. Positions are UTF-16 units. Not
/// safe for use from two threads at once, even for reading: a query may grow the row.
class QzAnnoBits final : public NSObject {
public:
    /// The number of positions of a new row.
    static constexpr uint32_t kInitialSize = 1024;

    /// `kInitialSize` clear positions.
    static Ref<QzAnnoBits> init();
    /// A row from stored bytes: '1' is a set position; any other byte reads as clear and is kept as is. Returns null
    /// for more than 2^32 - 1 bytes.
    static Ref<QzAnnoBits> initWithBytes(std::string_view bytes);

    /// The number of positions held.
    uint32_t size() const { return static_cast<uint32_t>(bits_.size()); }
    /// One byte per position; valid until the next call that may grow the row.
    std::string_view bytes() const { return {bits_.data(), bits_.size()}; }

    /// Reserves memory for `positions`, without any visible effect. Edits within them then do not fail.
    void reserve(uint64_t positions) const;

    /// Changes every position of `range`; afterwards at least one position beyond the range exists.
    ///@{
    void setRange(Range range);
    void clearRange(Range range);
    void toggleRange(Range range);
    ///@}
    /// Opens `range.length` new positions at `range.location`. They take the state of the position before; at 0 they
    /// are clear.
    void insertRange(Range range);
    /// Removes the positions of the range. The size stays the same: the last `range.length` positions keep their state.
    void removeRange(Range range);
    /// Copies the first `toRange.length` positions of the other set, not those at `toRange.location`, into the range.
    void copyBits(const QzAnnoBits& other, Range toRange);

    /// A new set of exactly the `range.length` positions of the range. Returns null if the range cannot be held.
    Ref<QzAnnoBits> annoSubbitsFromRange(Range range) const;
    /// A copy; this set gains a position at its end.
    ///@{
    Ref<QzAnnoBits> copy() const;
    Ref<QzAnnoBits> mutableCopy() const { return copy(); }
    ///@}

    /// Whether the position is set. `effectiveRange`, if given, receives the longest run of that state around `index`;
    /// it may reach past the text's end, and callers clip it. An index that cannot be held is clear, and its run is not
    /// written.
    ///
    /// The last run is remembered, so walking a row run by run, forward or backward, takes linear time.
    bool getValueAtIndex(uint32_t index, Range* effectiveRange = nullptr) const {
        if (!knownStretchIsRun_ || !knownStretch_.contains(index) || index + 1 >= bits_.size())
            return findValueAtIndex(index, effectiveRange);
        if (effectiveRange) *effectiveRange = knownStretch_;
        return isSet(index);
    }
    /// The same within a text of `textLength` positions, which must contain `index`: the run is clipped to the text,
    /// and a run that reaches the end of the row extends to the end of the text.
    bool getValueAtIndex(uint32_t index, Range* effectiveRange, uint32_t textLength) const {
        const bool value = getValueAtIndex(index, effectiveRange);
        if (effectiveRange && (effectiveRange->end() == size() || effectiveRange->end() > textLength))
            effectiveRange->length = textLength - effectiveRange->location;
        return value;
    }
    /// Whether both hold the same bytes in the range. A range that cannot be held differs unless it is empty.
    bool equalToAnnoBits(const QzAnnoBits& other, Range inRange) const;

    /// The set runs as "2-5, 7-9" with exclusive ends, a run that reaches the end of the row as "1000-"; "none" without
    /// any.
    std::string description() const override;
    std::string className() const override { return "QzAnnoBits"; }

private:
    explicit QzAnnoBits(std::vector<char> bits) : bits_(std::move(bits)) {}

    bool cover(uint64_t position) const;
    bool isSet(uint32_t index) const { return bits_[index] == '1'; }
    uint32_t endOfRun(uint32_t index) const;
    /// As `getValueAtIndex`, for an index outside the known stretch or near the row's end.
    bool findValueAtIndex(uint32_t index, Range* effectiveRange) const;
    void fill(Range range, char byte);
    void extendKnownStretch() const;
    void trimKnownStretch(Range edited);

    // Queries change these: the row grows, the known stretch moves.
    mutable std::vector<char> bits_;
    // Positions known to have one state: the last run queried, or what growth and edits left of it. A query scans on
    // from its ends, so queries do not rescan a long run, even between edits inside it.
    mutable Range knownStretch_;
    mutable bool knownStretchIsRun_ = false;
};

}  // namespace qz
