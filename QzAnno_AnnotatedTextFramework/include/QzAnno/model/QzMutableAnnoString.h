#pragma once

#include <string>
#include <string_view>

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

class NSAttributedString;

/// The edits of a mutable annotated string.
///
/// Edits of the text return false and change nothing if the range reaches beyond the text. Edits of annotations accept
/// any range that a bit set can hold, even past the text's end.
class QzAnnoStringWriting {
public:
    virtual ~QzAnnoStringWriting() = default;
    /// Takes the other's text and copies of its bit sets.
    virtual void setAnnoString(const QzAnnoString& other) = 0;

    /// The other's keys hold on the new characters as they do in the other; keys that only this string uses take the
    /// state of the preceding character.
    virtual bool insertAnnoString(const QzAnnoString& other, uint32_t atIndex) = 0;
    /// On the new characters, keys that only this string uses have whatever their bit sets hold past the text's end.
    virtual void appendAnnoString(const QzAnnoString& other) = 0;
    /// Deletes the range, then inserts.
    virtual bool replaceCharactersInRange(Range range, const QzAnnoString& withAnnoString) = 0;
    /// New characters take the annotations of the replaced ones position by position. Characters in excess take those
    /// of the preceding character, or no annotations at the start of the text.
    virtual bool replaceCharactersInRange(Range range, const Ref<NSString>& withString) = 0;
    /// The text after the range keeps its annotations.
    virtual bool deleteCharactersInRange(Range range) = 0;

    /// Sets every given key, which the string then uses, and leaves other keys alone. Does nothing if `keys` is null.
    virtual void setAnnos(const Ref<NSSet>& keys, Range range) = 0;
    /// Sets, clears or inverts one key at every position of the range. The string then uses the key, even if it was
    /// cleared. A null key, such as that of a name missing from the palette, changes nothing and logs a line.
    ///@{
    virtual void addAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    virtual void removeAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    virtual void toggleAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    ///@}
    /// The same over the whole text.
    ///@{
    virtual void addFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    virtual void removeFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    /// Clears the key everywhere if it holds at every character, else sets it everywhere.
    virtual void toggleFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    ///@}
};

/// An annotated string that is edited in place. Keys are never removed.
///
/// An edit that throws `std::bad_alloc` has changed nothing.
class QzMutableAnnoString final : public QzAnnoString, public QzAnnoStringWriting {
public:
    /// As for `QzAnnoString`.
    ///@{
    static Ref<QzMutableAnnoString> init();
    static Ref<QzMutableAnnoString> initWithString(const Ref<NSString>& string);
    static Ref<QzMutableAnnoString> initWithAnnoString(const QzAnnoString& other);
    ///@}
    /// Takes the text, and for each character the keys in its `QzAnnoAttributeName`, an `NSSet` or `NSArray`.
    static Ref<QzMutableAnnoString> initWithKeyedAttributedString(const NSAttributedString& attributedString);

    /// A copy of the text.
    std::u16string mutableString() const { return string()->characters(); }

    using QzAnnoString::bitsFor;
    /// The string's own row of positions, which you may change; created if the string does not use the key yet. Returns
    /// null, with a log line, if the key is null.
    Ref<QzAnnoBits> bitsFor(const Ref<QzAnnoKey>& key);

    void setAnnoString(const QzAnnoString& other) override;
    bool insertAnnoString(const QzAnnoString& other, uint32_t atIndex) override;
    void appendAnnoString(const QzAnnoString& other) override;
    bool replaceCharactersInRange(Range range, const QzAnnoString& withAnnoString) override;
    bool replaceCharactersInRange(Range range, const Ref<NSString>& withString) override;
    bool deleteCharactersInRange(Range range) override;

    void setAnnos(const Ref<NSSet>& keys, Range range) override;
    void addAnno(const Ref<QzAnnoKey>& key, Range range) override;
    void removeAnno(const Ref<QzAnnoKey>& key, Range range) override;
    void toggleAnno(const Ref<QzAnnoKey>& key, Range range) override;
    void addFrameAnno(const Ref<QzAnnoKey>& key) override { addAnno(key, {0, length()}); }
    void removeFrameAnno(const Ref<QzAnnoKey>& key) override { removeAnno(key, {0, length()}); }
    void toggleFrameAnno(const Ref<QzAnnoKey>& key) override;

    /// The string keeps no edit state; callers may bracket edits as they do for other editable text.
    ///@{
    void beginEditing() {}
    void endEditing() {}
    ///@}

    bool isEqual(const NSObject& other) const override;
    std::string className() const override { return "QzMutableAnnoString"; }

private:
    using QzAnnoString::QzAnnoString;

    Ref<NSString> stringReplacing(Range range, std::u16string_view characters) const;
    template <class Change>
    void changeRow(const Ref<QzAnnoKey>& key, const Change& change);
    void makeRoom(const std::vector<Ref<QzAnnoKey>>& keys, uint64_t end, uint64_t added);
    void makeRoomFor(const QzAnnoString& other, Range range);
    void openRows(const NSDictionary& rows, Range range, uint32_t newLength);
    void copyBitsOf(const QzAnnoString& other, Range toRange);
};

}  // namespace qz
