#include <limits>
#include <type_traits>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSNull.h"
#include "platform/foundation/NSURL.h"

namespace qz {
namespace {

void encodeString(const NSObject& object, NSArchiver& archiver) {
    const std::string utf8 = static_cast<const NSString&>(object).utf8();
    archiver.encodeValueOfObjCType("+", std::string_view(utf8));
}

Ref<NSObject> decodeString(NSUnarchiver& unarchiver) {
    std::string_view utf8;
    // While converting, one UTF-16 unit per byte.
    if (!unarchiver.decodeValueOfObjCType("+", &utf8) || !unarchiver.countMemory(2 * utf8.size())) return {};
    if (utf8.size() > std::numeric_limits<int32_t>::max()) {
        unarchiver.fail("a string of more than 2 GB");
        return {};
    }
    Ref<NSString> string = NSString::stringWithUTF8String(utf8);
    // One damaged character must not lose the whole text of a title.
    constexpr char16_t replacement = 0xFFFD;
    if (string->characters().find(replacement) != std::u16string::npos && string->utf8() != utf8) {
        NSLog("A string in the archive is not in UTF-8; its damaged characters are replaced: %@\n",
              {quotedExcerpt(string->utf8())});
    }
    return string;
}

const CodedClassRegistration registerString(
    {.name = "NSString", .version = 1, .encode = encodeString, .decode = decodeString, .aliases = {"NSMutableString"}});

void encodeNumber(const NSObject& object, NSArchiver& archiver) {
    const auto encode = [&](std::string_view type, CodedValue value) {
        archiver.encodeValueOfObjCType("*", type);
        archiver.encodeValueOfObjCType(type, std::move(value));
    };
    std::visit(
        [&](auto value) {
            using Kind = decltype(value);
            if constexpr (std::is_same_v<Kind, bool>)
                encode("c", value);
            else if constexpr (std::is_same_v<Kind, int32_t>)
                encode("i", value);
            else if constexpr (std::is_same_v<Kind, int64_t>)
                encode("q", value);
            else if constexpr (std::is_same_v<Kind, float>)
                encode("f", double{value});
            else
                encode("d", value);
        },
        static_cast<const NSNumber&>(object).value());
}

Ref<NSNumber> numberWithInteger(int64_t value) {
    const bool isShort = value == static_cast<int32_t>(value);
    return isShort ? NSNumber::numberWithInt(static_cast<int32_t>(value)) : NSNumber::numberWithLongLong(value);
}

// The type determines the kind; a type without a kind of its own becomes one that holds all its values.
Ref<NSObject> decodeNumber(NSUnarchiver& unarchiver) {
    std::string_view type;
    if (!unarchiver.decodeValueOfObjCType("*", &type)) return {};
    if (type == "f") {
        const std::optional<float> value = unarchiver.decodeFloat();
        return value ? NSNumber::numberWithFloat(*value) : nullptr;
    }
    if (type == "d") {
        const std::optional<double> value = unarchiver.decodeDouble();
        return value ? NSNumber::numberWithDouble(*value) : nullptr;
    }
    if (type.size() != 1 || std::string_view("cCBsSiIlLqQ").find(type[0]) == std::string_view::npos) {
        unarchiver.fail("a number of the type " + quotedExcerpt(type) + ", which is not a type of numbers");
        return {};
    }
    int64_t value = 0;
    if (!unarchiver.decodeValueOfObjCType(type, &value)) return {};
    // Bools have no type of their own.
    if (type == "B" || (type == "c" && (value == 0 || value == 1))) return NSNumber::numberWithBool(value != 0);
    return type == "q" ? NSNumber::numberWithLongLong(value) : numberWithInteger(value);
}

const CodedClassRegistration registerValue({.name = "NSValue"});
const CodedClassRegistration registerNumber(
    {.name = "NSNumber", .superclassName = "NSValue", .encode = encodeNumber, .decode = decodeNumber});

void encodeData(const NSObject& object, NSArchiver& archiver) {
    const std::vector<uint8_t>& bytes = static_cast<const NSData&>(object).bytes();
    if (bytes.size() > std::numeric_limits<int32_t>::max()) return archiver.fail("more than 2 GB of data");
    archiver.encodeInt(static_cast<int32_t>(bytes.size()));
    archiver.encodeChars(bytes);
}

Ref<NSObject> decodeData(NSUnarchiver& unarchiver) {
    const std::optional<int32_t> length = unarchiver.decodeInt();
    if (length && *length < 0) unarchiver.fail("data of " + std::to_string(*length) + " bytes");
    if (!length || unarchiver.hasFailed()) return {};
    const auto bytes = unarchiver.decodeArrayOfObjCType('c', static_cast<size_t>(*length));
    return bytes && unarchiver.countMemory(bytes->size()) ? NSData::dataWithBytes(*bytes) : nullptr;
}

const CodedClassRegistration registerData(
    {.name = "NSData", .encode = encodeData, .decode = decodeData, .aliases = {"NSMutableData"}});

void encodeDate(const NSObject& object, NSArchiver& archiver) {
    archiver.encodeDouble(static_cast<const NSDate&>(object).timeIntervalSinceReferenceDate());
}

Ref<NSObject> decodeDate(NSUnarchiver& unarchiver) {
    const std::optional<double> seconds = unarchiver.decodeDouble();
    return seconds ? NSDate::dateWithTimeIntervalSinceReferenceDate(*seconds) : nullptr;
}

const CodedClassRegistration registerDate({.name = "NSDate", .encode = encodeDate, .decode = decodeDate});

const CodedClassRegistration registerNull({.name = "NSNull",
                                           .encode = [](const NSObject&, NSArchiver&) {},
                                           .decode = [](NSUnarchiver&) -> Ref<NSObject> { return NSNull::null(); }});

void encodeURL(const NSObject& object, NSArchiver& archiver) {
    const auto& url = static_cast<const NSURL&>(object);
    archiver.encodeBool(url.baseURL() != nullptr);
    if (url.baseURL()) archiver.encodeObject(url.baseURL());
    archiver.encodeObject(url.relativeString());
}

Ref<NSObject> decodeURL(NSUnarchiver& unarchiver) {
    const std::optional<bool> isRelative = unarchiver.decodeBool();
    Ref<NSURL> base;
    if (isRelative && *isRelative) base = unarchiver.decodeObjectOfClass<NSURL>("NSURL");
    const auto string = unarchiver.decodeObjectOfClass<NSString>("NSString");
    return string ? NSURL::URLWithString(string, base) : nullptr;
}

const CodedClassRegistration registerURL({.name = "NSURL", .encode = encodeURL, .decode = decodeURL});

}  // namespace
}  // namespace qz
