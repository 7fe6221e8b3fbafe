#pragma once

#include <vector>

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSSet.h"

namespace qz {

class QzAnnoBits;
class QzAnnoString;
class QzMutableAnnoString;

/// The queries of an annotated string. Ranges and indices count UTF-16 units of the text.
///
/// A run reported by a query is the longest stretch around the index in which the queried annotations do not change,
/// clipped to the text and to `inRange`. If the index is outside the text or `inRange`, or `inRange` reaches beyond the
/// text, queries return false or null and do not write the out-range.
class QzAnnoStringReading {
public:
    virtual ~QzAnnoStringReading() = default;
    /// Whether text, keys and the runs of every key are equal. Keys without any set position count; positions past the
    /// text's end do not.
    virtual bool isEqualToAnnoString(const QzAnnoString& other) const = 0;
    /// Every key that the string uses, including those without any set position.
    virtual Ref<NSSet> allKeys() const = 0;
    /// The keys that hold at every character; empty if the text is.
    virtual Ref<NSSet> frame() const = 0;
    /// A new immutable string with every key of this one. Returns null if the range reaches beyond the text.
    virtual Ref<QzAnnoString> annoSubstringFromRange(Range range) const = 0;
    /// Whether the key holds at the index, with the run of this key alone. A null key, or one that the string does not
    /// use, holds nowhere: one run of the whole text.
    ///@{
    virtual bool annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* effectiveRange = nullptr) const = 0;
    virtual bool annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* longestEffectiveRange,
                            Range inRange) const = 0;
    ///@}
    /// The set of keys that hold at the index, with the run of all keys together.
    ///@{
    virtual Ref<NSSet> annotationsAtIndex(uint32_t index, Range* effectiveRange = nullptr) const = 0;
    virtual Ref<NSSet> annotationsAtIndex(uint32_t index, Range* longestEffectiveRange, Range inRange) const = 0;
    ///@}
    /// Never null.
    virtual Ref<NSString> string() const = 0;
    /// In UTF-16 units.
    virtual uint32_t length() const = 0;
};

/// A text and, for every annotation key that it uses, the positions where the annotation holds.
///
/// Each string has its own bit sets. They may grow during queries, without any visible effect. Walking a string run by
/// run takes time proportional to its length times its number of keys. Not safe for use from two threads at once, even
/// for reading.
class QzAnnoString : public NSObject, public QzAnnoStringReading {
public:
    /// A stretch of text in which no annotation begins or ends.
    struct Run {
        Range range;      ///< never empty
        Ref<NSSet> keys;  ///< of `QzAnnoKey`; never null
    };

    /// An empty text.
    static Ref<QzAnnoString> init();
    /// A null text counts as empty.
    static Ref<QzAnnoString> initWithString(const Ref<NSString>& string);
    /// With the same text and keys, and its own bit sets.
    static Ref<QzAnnoString> initWithAnnoString(const QzAnnoString& other);
    /// Of this class also when asked of the mutable one.
    static Ref<QzAnnoString> annoStringWithString(const Ref<NSString>& string) { return initWithString(string); }

    bool isEqualToAnnoString(const QzAnnoString& other) const override;
    Ref<NSSet> allKeys() const override;
    Ref<NSSet> frame() const override;
    Ref<QzAnnoString> annoSubstringFromRange(Range range) const override;
    bool annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* effectiveRange = nullptr) const override;
    bool annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* longestEffectiveRange,
                    Range inRange) const override;
    Ref<NSSet> annotationsAtIndex(uint32_t index, Range* effectiveRange = nullptr) const override;
    Ref<NSSet> annotationsAtIndex(uint32_t index, Range* longestEffectiveRange, Range inRange) const override;
    Ref<NSString> string() const override { return s_; }
    uint32_t length() const override { return s_->length(); }

    /// All runs in order. Runs with the same keys share one set object, so what costs much to make of a set can be made
    /// once.
    std::vector<Run> runs() const;

    /// The string's own row of positions; null if the string does not use the key.
    Ref<const QzAnnoBits> bitsFor(const Ref<QzAnnoKey>& key) const;

    /// With the same text and keys, and its own bit sets.
    ///@{
    Ref<QzAnnoString> copy() const { return initWithAnnoString(*this); }
    Ref<QzMutableAnnoString> mutableCopy() const;
    ///@}

    /// Whether the other is of the same class or one derived from it, with equal text, keys and runs. So a mutable
    /// string never equals an immutable one, though the reverse may hold.
    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return s_->hash(); }
    /// The text, its frame-wide keys, and the runs of every bit set, the part past the text's end included.
    std::string description() const override;
    std::string className() const override { return "QzAnnoString"; }

protected:
    /// A null text counts as empty.
    explicit QzAnnoString(const Ref<NSString>& string);

    /// The row of a key that is there.
    Ref<QzAnnoBits> rowOf(const NSObject& key) const;

private:
    friend class MutableSupport;

    Range statesAt(uint32_t index, Range limit, bool withRange, std::vector<bool>& holding) const;
    Ref<NSSet> keysHolding(const std::vector<bool>& holding) const;

    // Replaced, never changed in place; its bit sets are.
    Ref<NSDictionary> annotations_;
    Ref<NSString> s_;
};

}  // namespace qz
