#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoAttributeName.h"
#include "platform/foundation/NSArray.h"
#include "platform/text/NSAttributedString.h"

namespace qz {
namespace {

QzAnnoBits& bitsOf(const ObjectMap::Entry& entry) {
    return static_cast<QzAnnoBits&>(*entry.value);
}

/// A set, or the elements of an array as a set; none otherwise.
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
    if (!key) return {};
    if (Ref<QzAnnoBits> bits = bitsFor(*key)) return bits;
    Ref<QzAnnoBits> bits = QzAnnoBits::init();
    ObjectMap entries = annotations()->map();
    entries.set(key, bits);
    setAnnotations(NSDictionary::dictionaryWithMap(std::move(entries)), false);
    return bits;
}

void QzMutableAnnoString::setAnnos(const Ref<NSSet>& keys, Range range) {
    if (!keys) return;
    for (const Ref<QzAnnoKey>& key : keys->objects<QzAnnoKey>()) addAnno(key, range);
}

void QzMutableAnnoString::addAnno(const Ref<QzAnnoKey>& key, Range range) {
    if (const Ref<QzAnnoBits> bits = bitsFor(key)) bits->setRange(range);
}

void QzMutableAnnoString::removeAnno(const Ref<QzAnnoKey>& key, Range range) {
    if (const Ref<QzAnnoBits> bits = bitsFor(key)) bits->clearRange(range);
}

void QzMutableAnnoString::toggleAnno(const Ref<QzAnnoKey>& key, Range range) {
    if (const Ref<QzAnnoBits> bits = bitsFor(key)) bits->toggleRange(range);
}

void QzMutableAnnoString::toggleFrameAnno(const Ref<QzAnnoKey>& key) {
    if (!key) return;
    if (frame()->containsObject(*key)) {
        removeFrameAnno(key);
    } else {
        addFrameAnno(key);
    }
}

/// The text with the characters in place of the range; none when the range reaches beyond it.
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

bool QzMutableAnnoString::replaceCharactersInRange(Range range, const Ref<NSString>& withString) {
    if (!withString) return false;
    const Ref<NSString> edited = stringReplacing(range, withString->characters());
    if (!edited) return false;
    const uint32_t newLength = withString->length();
    for (const ObjectMap::Entry& entry : annotations()->map().entries()) {
        if (newLength > range.length) {
            bitsOf(entry).insertRange({range.location + range.length, newLength - range.length});
        } else if (newLength < range.length) {
            // A row that ended inside the text would keep its last positions there; a query makes it reach the text's
            // end.
            bitsOf(entry).getValueAtIndex(length() - 1);
            bitsOf(entry).removeRange({range.location + newLength, range.length - newLength});
        }
    }
    setString(edited, false);
    return true;
}

bool QzMutableAnnoString::replaceCharactersInRange(Range range, const QzAnnoString& withAnnoString) {
    if (&withAnnoString == this) return replaceCharactersInRange(range, *copy());
    return deleteCharactersInRange(range) && insertAnnoString(withAnnoString, range.location);
}

bool QzMutableAnnoString::insertAnnoString(const QzAnnoString& other, uint32_t atIndex) {
    if (&other == this) return insertAnnoString(*copy(), atIndex);
    const Range inserted{atIndex, other.length()};
    if (!replaceCharactersInRange({atIndex, 0}, other.string())) return false;
    copyBitsOf(other, inserted);
    return true;
}

void QzMutableAnnoString::appendAnnoString(const QzAnnoString& other) {
    if (&other == this) return appendAnnoString(*copy());
    const Range appended{length(), other.length()};
    const Ref<NSString> edited = stringReplacing({length(), 0}, other.string()->characters());
    copyBitsOf(other, appended);
    setString(edited, false);
}

void QzMutableAnnoString::copyBitsOf(const QzAnnoString& other, Range toRange) {
    for (const ObjectMap::Entry& entry : other.annotations()->map().entries()) {
        bitsFor(std::static_pointer_cast<QzAnnoKey>(entry.key))->copyBits(bitsOf(entry), toRange);
    }
}

void QzMutableAnnoString::setAnnoString(const QzAnnoString& other) {
    setString(other.string(), true);
    setAnnotations(other.annotations(), true);
}

bool QzMutableAnnoString::isEqual(const NSObject& other) const {
    const auto* string = dynamic_cast<const QzMutableAnnoString*>(&other);
    return string && isEqualToAnnoString(*string);
}

}  // namespace qz
