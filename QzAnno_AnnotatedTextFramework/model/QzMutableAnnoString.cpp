#include "QzAnno/model/QzMutableAnnoString.h"

#include <algorithm>

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

QzAnnoBits& bitsOf(const ObjectMap::Entry& entry) {
    return static_cast<QzAnnoBits&>(*entry.value);
}

/// Whether the key is null; logs a line if so, since it usually comes from a name missing from the palette.
bool isNull(const Ref<QzAnnoKey>& key) {
    if (!key) NSLog("A null annotation key changes nothing; check that the palette has the name it was looked up by\n");
    return !key;
}

/// The set, or the elements of an array as a set; null for anything else.
Ref<NSSet> asSet(const Ref<NSObject>& collection) {
    if (const auto array = std::dynamic_pointer_cast<NSArray>(collection)) {
        return NSSet::setWithObjects(array->elements());
    }
    return std::dynamic_pointer_cast<NSSet>(collection);
}

}  // namespace

Ref<QzMutableAnnoString> QzMutableAnnoString::init() {
    return initWithString({});
}

Ref<QzMutableAnnoString> QzMutableAnnoString::initWithString(const Ref<NSString>& string) {
    return Ref<QzMutableAnnoString>(new QzMutableAnnoString(string));
}

Ref<QzMutableAnnoString> QzMutableAnnoString::initWithAnnoString(const QzAnnoString& other) {
    Ref<QzMutableAnnoString> copy = init();
    copy->setAnnoString(other);
    return copy;
}

Ref<QzMutableAnnoString> QzMutableAnnoString::initWithKeyedAttributedString(
    const NSAttributedString& attributedString) {
    Ref<QzMutableAnnoString> string = initWithString(attributedString.string());
    const Range whole{0, attributedString.length()};
    for (Range run; run.end() < whole.end();) {
        const uint32_t next = run.location + run.length;
        string->setAnnos(asSet(attributedString.attribute(*QzAnnoAttributeName, next, &run, whole)), run);
    }
    return string;
}

Ref<QzAnnoBits> QzMutableAnnoString::bitsFor(const Ref<QzAnnoKey>& key) {
    changeRow(key, [](QzAnnoBits&) {});
    return key ? rowOf(*key) : nullptr;
}

/// Changes the key's row. A new row is added to the string only after the change.
template <class Change>
void QzMutableAnnoString::changeRow(const Ref<QzAnnoKey>& key, const Change& change) {
    if (isNull(key)) return;
    if (const Ref<QzAnnoBits> row = rowOf(*key)) return change(*row);
    const Ref<QzAnnoBits> row = QzAnnoBits::init();
    change(*row);
    ObjectMap entries = MutableSupport::annotations(*this)->map();
    entries.set(key, row);
    MutableSupport::setAnnotations(*this, NSDictionary::dictionaryWithMap(std::move(entries)), false);
}

/// Makes missing rows for the keys, and in every row room for positions up to `end` and `added` more. The rest of the
/// edit cannot fail.
void QzMutableAnnoString::makeRoom(const std::vector<Ref<QzAnnoKey>>& keys, uint64_t end, uint64_t added) {
    const Ref<NSDictionary>& rows = MutableSupport::annotations(*this);
    ObjectMap entries = rows->map();
    for (const Ref<QzAnnoKey>& key : keys) {
        if (!entries.contains(*key)) entries.set(key, QzAnnoBits::init());
    }
    for (const ObjectMap::Entry& entry : entries.entries()) {
        QzAnnoBits& row = bitsOf(entry);
        row.reserve(std::max<uint64_t>(row.size(), end) + added);
    }
    if (entries.size() > rows->count())
        MutableSupport::setAnnotations(*this, NSDictionary::dictionaryWithMap(std::move(entries)), false);
}

void QzMutableAnnoString::setAnnos(const Ref<NSSet>& keys, Range range) {
    if (!keys) return;
    const std::vector<Ref<QzAnnoKey>> added = keys->objects<QzAnnoKey>();
    makeRoom(added, range.end() + 1, 0);
    for (const Ref<QzAnnoKey>& key : added) rowOf(*key)->setRange(range);
}

void QzMutableAnnoString::addAnno(const Ref<QzAnnoKey>& key, Range range) {
    changeRow(key, [range](QzAnnoBits& row) { row.setRange(range); });
}

void QzMutableAnnoString::removeAnno(const Ref<QzAnnoKey>& key, Range range) {
    changeRow(key, [range](QzAnnoBits& row) { row.clearRange(range); });
}

void QzMutableAnnoString::toggleAnno(const Ref<QzAnnoKey>& key, Range range) {
    changeRow(key, [range](QzAnnoBits& row) { row.toggleRange(range); });
}

void QzMutableAnnoString::toggleFrameAnno(const Ref<QzAnnoKey>& key) {
    if (isNull(key)) return;
    if (frame()->containsObject(*key)) {
        removeFrameAnno(key);
    } else {
        addFrameAnno(key);
    }
}

/// The text with the range replaced by the characters; null if the range reaches beyond the text.
Ref<NSString> QzMutableAnnoString::stringReplacing(Range range, std::u16string_view characters) const {
    if (range.end() > length()) return {};
    const std::u16string_view old = string()->characters();
    std::u16string edited;
    edited.reserve(old.size() - range.length + characters.size());
    edited.append(old.substr(0, range.location)).append(characters).append(old.substr(range.end()));
    return NSString::stringWithCharacters(std::move(edited));
}

bool QzMutableAnnoString::deleteCharactersInRange(Range range) {
    return replaceCharactersInRange(range, NSString::string());
}

/// Fits the number of positions in the range to the new text: opens positions after the range, or closes its last ones.
void QzMutableAnnoString::openRows(const NSDictionary& rows, Range range, uint32_t newLength) {
    for (const ObjectMap::Entry& entry : rows.map().entries()) {
        if (newLength > range.length) {
            bitsOf(entry).insertRange({range.location + range.length, newLength - range.length});
        } else if (newLength < range.length) {
            // A row that ends inside the text would keep its last positions there; a query makes it reach the text's
            // end.
            bitsOf(entry).getValueAtIndex(length() - 1);
            bitsOf(entry).removeRange({range.location + newLength, range.length - newLength});
        }
    }
}

bool QzMutableAnnoString::replaceCharactersInRange(Range range, const Ref<NSString>& withString) {
    if (!withString) return false;
    const Ref<NSString> edited = stringReplacing(range, withString->characters());
    if (!edited) return false;
    makeRoom({}, uint64_t{length()} + 1, uint64_t{withString->length()} + 1);
    openRows(*MutableSupport::annotations(*this), range, withString->length());
    MutableSupport::setString(*this, edited);
    return true;
}

bool QzMutableAnnoString::replaceCharactersInRange(Range range, const QzAnnoString& withAnnoString) {
    if (&withAnnoString == this) return replaceCharactersInRange(range, *copy());
    const Range inserted{range.location, withAnnoString.length()};
    const Ref<NSString> edited = stringReplacing(range, withAnnoString.string()->characters());
    if (!edited) return false;
    // New rows are clear and need no moving.
    const Ref<NSDictionary> rows = MutableSupport::annotations(*this);
    makeRoomFor(withAnnoString, inserted);
    openRows(*rows, range, 0);
    openRows(*rows, {range.location, 0}, inserted.length);
    MutableSupport::setString(*this, edited);
    copyBitsOf(withAnnoString, inserted);
    return true;
}

bool QzMutableAnnoString::insertAnnoString(const QzAnnoString& other, uint32_t atIndex) {
    return replaceCharactersInRange({atIndex, 0}, other);
}

void QzMutableAnnoString::appendAnnoString(const QzAnnoString& other) {
    if (&other == this) return appendAnnoString(*copy());
    const Range appended{length(), other.length()};
    const Ref<NSString> edited = stringReplacing({length(), 0}, other.string()->characters());
    makeRoomFor(other, appended);
    MutableSupport::setString(*this, edited);
    copyBitsOf(other, appended);
}

/// Makes room in the range for the other's rows, which `copyBitsOf` copies there; that may make the other's rows grow.
void QzMutableAnnoString::makeRoomFor(const QzAnnoString& other, Range range) {
    for (const ObjectMap::Entry& entry : MutableSupport::annotations(other)->map().entries())
        bitsOf(entry).reserve(range.end() + 2);
    makeRoom(other.allKeys()->objects<QzAnnoKey>(), uint64_t{length()} + 1, uint64_t{range.length} + 1);
}

void QzMutableAnnoString::copyBitsOf(const QzAnnoString& other, Range toRange) {
    for (const ObjectMap::Entry& entry : MutableSupport::annotations(other)->map().entries()) {
        rowOf(*entry.key)->copyBits(bitsOf(entry), toRange);
    }
}

void QzMutableAnnoString::setAnnoString(const QzAnnoString& other) {
    MutableSupport::setAnnotations(*this, MutableSupport::annotations(other), true);
    MutableSupport::setString(*this, other.string());
}

bool QzMutableAnnoString::isEqual(const NSObject& other) const {
    const auto* string = dynamic_cast<const QzMutableAnnoString*>(&other);
    return string && isEqualToAnnoString(*string);
}

}  // namespace qz
