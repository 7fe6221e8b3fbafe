#include <algorithm>
#include <charconv>
#include <chrono>
#include <climits>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <expat.h>
#include <unicode/ucnv.h>

#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "platform/foundation/DiagnosticText.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

using NSPropertyListSerialization::kDepthMax;

constexpr std::string_view kXmlSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(kXmlSpace);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kXmlSpace) - first + 1);
}

// A value, or the reason why the text is not one.
struct Parsed {
    Ref<NSObject> value;
    std::string error;
};

Parsed refused(std::string_view text, const std::string& what) {
    return {nullptr, quotedExcerpt(text) + " " + what};
}

Parsed parseInteger(std::string_view text) {
    std::string_view digits = text;
    const bool isNegative = digits.starts_with('-');
    if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
    int base = 10;
    if (digits.starts_with("0x") || digits.starts_with("0X")) {
        digits.remove_prefix(2);
        base = 16;
    }
    uint64_t magnitude = 0;
    const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (status == std::errc::invalid_argument || end != digits.data() + digits.size()) {
        return refused(text, "is not a whole number");
    }
    constexpr uint64_t positiveMax = INT64_MAX;
    if (status != std::errc() || magnitude > positiveMax + (isNegative ? 1 : 0)) {
        return refused(text, "does not fit in a signed 64-bit integer");
    }
    const auto value = static_cast<int64_t>(isNegative ? 0 - magnitude : magnitude);
    if (value < INT32_MIN || value > INT32_MAX) return {NSNumber::numberWithLongLong(value), {}};
    return {NSNumber::numberWithInt(static_cast<int32_t>(value)), {}};
}

Parsed parseReal(std::string_view text) {
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    double value = 0;
    // Also accepts "nan", "inf" and "infinity" in any case.
    const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (status == std::errc::invalid_argument || end != digits.data() + digits.size())
        return refused(text, "is not a number");
    if (status != std::errc()) return refused(text, "lies outside the range of a real number");
    return {NSNumber::numberWithDouble(value), {}};
}

// The number in a field that consists of digits only.
std::optional<unsigned> digitsAt(std::string_view text, size_t index, size_t count) {
    unsigned value = 0;
    const char* begin = text.data() + index;
    const auto [end, status] = std::from_chars(begin, begin + count, value);
    return status == std::errc() && end == begin + count ? std::optional(value) : std::nullopt;
}

Parsed parseDate(std::string_view text) {
    using namespace std::chrono;
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    const auto hasForm = [&] {
        return std::ranges::equal(text, form, [](char c, char f) { return f == '0' ? c >= '0' && c <= '9' : c == f; });
    };
    if (!hasForm()) return refused(text, "is not a date of the form YYYY-MM-DDTHH:MM:SSZ");
    const year_month_day date(year(static_cast<int>(*digitsAt(text, 0, 4))), month(*digitsAt(text, 5, 2)),
                              day(*digitsAt(text, 8, 2)));
    const unsigned hour = *digitsAt(text, 11, 2);
    const unsigned minute = *digitsAt(text, 14, 2);
    const unsigned second = *digitsAt(text, 17, 2);
    if (!date.ok() || hour > 23 || minute > 59 || second > 59) return refused(text, "is not a date of the calendar");
    const seconds time =
        sys_days(date) - sys_days(year(2001) / 1 / 1) + hours(hour) + minutes(minute) + seconds(second);
    return {NSDate::dateWithTimeIntervalSinceReferenceDate(static_cast<double>(time.count())), {}};
}

std::optional<uint32_t> base64Digit(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return std::nullopt;
}

Parsed parseData(std::string_view text) {
    std::vector<uint8_t> bytes;
    uint32_t group = 0;
    size_t digits = 0;
    size_t padding = 0;
    for (const char c : text) {
        if (kXmlSpace.find(c) != std::string_view::npos) continue;
        const std::optional<uint32_t> digit = base64Digit(c);
        if (c == '=')
            ++padding;
        else if (!digit)
            return refused(std::string_view(&c, 1), "is not a base64 digit");
        else if (padding > 0)
            return {nullptr, "base64 digits follow the padding"};
        group = group << 6 | digit.value_or(0);
        if (++digits % 4 != 0) continue;
        if (padding > 2) break;
        for (size_t k = 0; k < 3 - padding; ++k) bytes.push_back(static_cast<uint8_t>(group >> (16 - 8 * k)));
    }
    if (digits % 4 != 0 || padding > 2) return {nullptr, "the base64 text has wrong padding or is cut off"};
    return {NSData::dataWithBytes(std::move(bytes)), {}};
}

Parsed parseBool(std::string_view text, bool value) {
    if (!text.empty()) return refused(text, value ? "stands inside \"true\"" : "stands inside \"false\"");
    return {NSNumber::numberWithBool(value), {}};
}

Parsed parseLeaf(std::string_view element, std::string_view text) {
    if (element == "string" || element == "key") return {NSString::stringWithUTF8String(text), {}};
    if (element == "data") return parseData(text);
    const std::string_view content = trimmed(text);
    if (element == "integer") return parseInteger(content);
    if (element == "real") return parseReal(content);
    if (element == "date") return parseDate(content);
    return parseBool(content, element == "true");
}

bool isLeaf(std::string_view element) {
    static constexpr std::string_view leaves[] = {"string", "key", "integer", "real", "date", "data", "true", "false"};
    return std::ranges::find(leaves, element) != std::end(leaves);
}

// Fills Expat's table for converting an 8-bit encoding to Unicode. Returns 0 if the encoding is unknown or wider.
int fillEncoding(void*, const XML_Char* name, XML_Encoding* encoding) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open(name, &status), ucnv_close);
    if (U_FAILURE(status) || ucnv_getMaxCharSize(converter.get()) != 1) return 0;
    for (int i = 0; i < 256; ++i) {
        const char byte = static_cast<char>(i);
        const char* source = &byte;
        UErrorCode result = U_ZERO_ERROR;
        const UChar32 character = ucnv_getNextUChar(converter.get(), &source, source + 1, &result);
        encoding->map[i] = U_FAILURE(result) || character == 0xFFFD ? -1 : character;
    }
    encoding->data = nullptr;
    encoding->convert = nullptr;
    encoding->release = nullptr;
    return 1;
}

// Builds the objects while Expat streams over the text. The open containers are kept on an explicit stack, so deep
// files do not overflow the call stack.
class Reader {
public:
    Reader();
    // Returns null, with `error()` set, if the text is not a property list.
    Ref<NSObject> read(std::string_view xml);
    const std::string& error() const { return error_; }

private:
    struct Container {
        bool isDictionary = false;
        std::vector<Ref<NSObject>> elements;
        ObjectMap entries;
        Ref<NSString> key;
    };
    struct Place {
        XML_Size line = 0;
        XML_Size column = 0;
    };

    void startElement(std::string_view name);
    void endElement(std::string_view name);
    void characters(std::string_view text);
    void startValue(std::string_view name);
    void fileValue(Ref<NSObject> value);
    Ref<NSObject> closeContainer();

    Place here() const { return {XML_GetCurrentLineNumber(parser_.get()), XML_GetCurrentColumnNumber(parser_.get())}; }
    // Keeps the first failure only.
    void fail(Place place, const std::string& what);
    void fail(const std::string& what) { fail(here(), what); }
    std::string expatFailure() const;

    // Runs the body of an Expat callback; Expat is written in C, so no exception may pass through it.
    template <class Body>
    static void guarded(void* reader, Body body) noexcept {
        Reader& self = *static_cast<Reader*>(reader);
        if (self.stopped_) return;
        try {
            body(self);
        } catch (...) {
            self.thrown_ = std::current_exception();
            self.stop();
        }
    }
    void stop() {
        stopped_ = true;
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
    std::vector<Container> containers_;
    bool plistWasSeen_ = false;
    // The element whose text is being read, or empty; its text so far, and where it began.
    std::string leaf_;
    std::string text_;
    Place leafPlace_;
    Ref<NSObject> root_;
    std::string error_;
    std::exception_ptr thrown_;
    bool stopped_ = false;
};

Reader::Reader() : parser_(XML_ParserCreate(nullptr), XML_ParserFree) {
    if (!parser_) throw std::bad_alloc();
    XML_Parser parser = parser_.get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(
        parser,
        [](void* reader, const XML_Char* name, const XML_Char**) {
            guarded(reader, [name](Reader& self) { self.startElement(name); });
        },
        [](void* reader, const XML_Char* name) { guarded(reader, [name](Reader& self) { self.endElement(name); }); });
    XML_SetCharacterDataHandler(parser, [](void* reader, const XML_Char* text, int length) {
        guarded(reader, [=](Reader& self) { self.characters({text, static_cast<size_t>(length)}); });
    });
    XML_SetEntityDeclHandler(parser, [](void* reader, const XML_Char* name, int, const XML_Char*, int, const XML_Char*,
                                        const XML_Char*, const XML_Char*, const XML_Char*) {
        guarded(reader, [name](Reader& self) {
            self.fail("the entity " + quotedExcerpt(name) + " is declared; property lists may not declare entities");
        });
    });
    // Where a DTD is not read, Expat skips entities that it does not know.
    XML_SetSkippedEntityHandler(parser, [](void* reader, const XML_Char* name, int) {
        guarded(reader, [name](Reader& self) { self.fail("the entity " + quotedExcerpt(name) + " is not known"); });
    });
    XML_SetUnknownEncodingHandler(parser, fillEncoding, nullptr);
}

void Reader::fail(Place place, const std::string& what) {
    if (stopped_) return;
    error_ = "line " + std::to_string(place.line) + ", column " + std::to_string(place.column + 1) + ": " + what;
    stop();
}

void Reader::startElement(std::string_view name) {
    if (!leaf_.empty()) return fail("the element " + quotedExcerpt(name) + " stands inside \"" + leaf_ + "\"");
    if (name != "plist") return startValue(name);
    if (plistWasSeen_ || root_ || !containers_.empty())
        return fail("the element \"plist\" stands inside the property list");
    plistWasSeen_ = true;
}

void Reader::startValue(std::string_view name) {
    if (containers_.empty() && root_) return fail("a second value; a property list holds one");
    if (containers_.size() >= static_cast<size_t>(kDepthMax)) {
        return fail("more than " + std::to_string(kDepthMax) + " levels of nesting");
    }
    const bool inDictionary = !containers_.empty() && containers_.back().isDictionary;
    const bool hasKey = inDictionary && containers_.back().key;
    if (name == "key" && !inDictionary) return fail("a key outside a dictionary");
    if (name == "key" && hasKey) return fail("a key without a value before this one");
    if (name != "key" && inDictionary && !hasKey) return fail("a value without a key");
    if (isLeaf(name)) {
        leaf_ = name;
        text_.clear();
        leafPlace_ = here();
    } else if (name == "dict" || name == "array") {
        containers_.emplace_back().isDictionary = name == "dict";
    } else {
        fail("the element " + quotedExcerpt(name) + " does not belong in a property list");
    }
}

void Reader::characters(std::string_view text) {
    if (!leaf_.empty()) {
        text_ += text;
    } else if (!trimmed(text).empty()) {
        fail("the text " + quotedExcerpt(trimmed(text)) + " stands outside the values");
    }
}

void Reader::endElement(std::string_view name) {
    if (!leaf_.empty()) {
        Parsed parsed = parseLeaf(leaf_, text_);
        if (!parsed.value) return fail(leafPlace_, leaf_ + ": " + parsed.error);
        leaf_.clear();
        if (name == "key")
            containers_.back().key = std::static_pointer_cast<NSString>(parsed.value);
        else
            fileValue(std::move(parsed.value));
    } else if (name == "plist") {
        if (!root_) fail("the property list holds no value");
    } else {
        if (containers_.back().key) return fail("a key without a value at the end of the dictionary");
        fileValue(closeContainer());
    }
}

Ref<NSObject> Reader::closeContainer() {
    Container container = std::move(containers_.back());
    containers_.pop_back();
    if (container.isDictionary) return NSDictionary::dictionaryWithMap(std::move(container.entries));
    return NSArray::arrayWithObjects(std::move(container.elements));
}

void Reader::fileValue(Ref<NSObject> value) {
    if (containers_.empty()) {
        root_ = std::move(value);
    } else if (Container& container = containers_.back(); container.isDictionary) {
        container.entries.set(std::exchange(container.key, nullptr), std::move(value));
    } else {
        container.elements.push_back(std::move(value));
    }
}

std::string Reader::expatFailure() const {
    const XML_Error code = XML_GetErrorCode(parser_.get());
    if (code == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
    if (code == XML_ERROR_NO_ELEMENTS || code == XML_ERROR_UNCLOSED_TOKEN) {
        return "the file ends before the property list does";
    }
    return std::string("this is not well-formed XML: ") + XML_ErrorString(code);
}

Ref<NSObject> Reader::read(std::string_view xml) {
    // Expat counts in int.
    constexpr size_t pieceMax = INT_MAX / 2;
    do {
        const std::string_view piece = xml.substr(0, pieceMax);
        xml.remove_prefix(piece.size());
        const XML_Status status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), xml.empty());
        if (thrown_) std::rethrow_exception(thrown_);
        if (status != XML_STATUS_OK) fail(expatFailure());
    } while (!xml.empty() && !stopped_);
    return stopped_ ? nullptr : root_;
}

// The name of the file's form if it is recognisably not XML; empty otherwise.
std::string foreignForm(std::string_view file) {
    static constexpr char howToConvert[] = "; convert it with: plistutil -f xml -i FILE -o FILE.plist";
    if (file.starts_with("bplist")) return std::string("this is a property list in the binary form") + howToConvert;
    using namespace std::literals;
    if (file.starts_with("\xFF\xFE\0\0"sv) || file.starts_with("\0\0\xFE\xFF"sv)) {
        return "this text is in UTF-32; save it as UTF-8";
    }
    if (file.starts_with("\xEF\xBB\xBF")) file.remove_prefix(3);
    const std::string_view text = file.substr(std::min(file.find_first_not_of(kXmlSpace), file.size()));
    if (text.empty()) return "the file is empty";
    // Data of the old form, "<0fbd777 1c27>", differs from an element in holding only digits and blanks.
    const size_t dataEnd = text.find_first_not_of("0123456789abcdefABCDEF \t\r\n", 1);
    const bool isOldData = text[0] == '<' && dataEnd != std::string_view::npos && text[dataEnd] == '>';
    const bool isOld = isOldData || text[0] == '{' || text[0] == '(' || text[0] == '"' || text.starts_with("//") ||
                       text.starts_with("/*");
    if (isOld) return std::string("this is a property list in the old text form") + howToConvert + " (2.3 or later)";
    return {};
}

}  // namespace

Ref<NSObject> NSPropertyListSerialization::propertyListFromData(const NSData& data, std::string* errorDescription) {
    std::string error = foreignForm(data.view());
    if (error.empty()) {
        Reader reader;
        if (Ref<NSObject> root = reader.read(data.view())) return root;
        error = reader.error();
    }
    if (errorDescription) *errorDescription = std::move(error);
    return {};
}

}  // namespace qz
