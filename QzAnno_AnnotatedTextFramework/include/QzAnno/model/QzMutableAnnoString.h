#pragma once

#include <string>
#include <string_view>

#include "QzAnno/model/QzAnnoString.h"

namespace qz {

class NSAttributedString;

/// What can be done to a mutable annotated string.
///
/// Edits of the text whose range reaches beyond it are refused: false, and nothing changed. Edits of annotations accept
/// any range that a bit set can hold, also past the text's end.
class QzAnnoStringWriting {
public:
    virtual ~QzAnnoStringWriting() = default;
    /// Takes over the other's text and a copy of each of its bit sets.
    virtual void setAnnoString(const QzAnnoString& other) = 0;

    /// The other's keys hold on the new characters exactly as they hold in the other; keys that only this string uses
    /// take the state of the character before.
    virtual bool insertAnnoString(const QzAnnoString& other, uint32_t atIndex) = 0;
    /// Keys that only this string uses show, on the new characters, what their bit sets hold past the text's end.
    virtual void appendAnnoString(const QzAnnoString& other) = 0;
    /// Deletes the range, then inserts.
    virtual bool replaceCharactersInRange(Range range, const QzAnnoString& withAnnoString) = 0;
    /// New characters take the annotations of the replaced ones position by position; those in excess take the state of
    /// the character before them, and none at the start of the text.
    virtual bool replaceCharactersInRange(Range range, const Ref<NSString>& withString) = 0;
    /// What follows keeps its annotations.
    virtual bool deleteCharactersInRange(Range range) = 0;

    /// Sets every given key, which becomes one of the string's; other keys are untouched. No set: nothing happens.
    virtual void setAnnos(const Ref<NSSet>& keys, Range range) = 0;
    /// Sets, clears or reverses one key at every position of the range. The key becomes one of the string's, even when
    /// it is cleared. A null key, as for a name that a palette does not have, changes nothing and leaves a log line.
    ///@{
    virtual void addAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    virtual void removeAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    virtual void toggleAnno(const Ref<QzAnnoKey>& key, Range range) = 0;
    ///@}
    /// The same over the whole text.
    ///@{
    virtual void addFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    virtual void removeFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    /// Clears the key everywhere when it holds at every character, sets it everywhere otherwise.
    virtual void toggleFrameAnno(const Ref<QzAnnoKey>& key) = 0;
    ///@}
};

/// An annotated string that is edited in place. Keys are never removed once added.
///
/// An edit that ends with `std::bad_alloc` has changed nothing.
class QzMutableAnnoString final : public QzAnnoString, public QzAnnoStringWriting {
public:
    /// As for `QzAnnoString`.
    ///@{
    static Ref<QzMutableAnnoString> init();
    static Ref<QzMutableAnnoString> initWithString(const Ref<NSString>& string);
    static Ref<QzMutableAnnoString> initWithAnnoString(const QzAnnoString& other);
    ///@}
    /// The text, and at each character the keys of its `QzAnnoAttributeName`, an `NSSet` or `NSArray`.
    static Ref<QzMutableAnnoString> initWithKeyedAttributedString(const NSAttributedString& attributedString);

    /// A copy of the text.
    std::u16string mutableString() const { return string()->characters(); }

    using QzAnnoString::bitsFor;
    /// The string's own row of positions, to be changed; made first when the string does not use the key. Null, with a
    /// log line, for a null key.
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
