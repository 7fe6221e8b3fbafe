#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/Limits.h"
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

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kFoot = "</plist>\n";
// A multiple of 4, so that each line decodes by itself.
constexpr size_t kBase64Columns = 76;

// The index of the first unit that XML 1.0 does not allow, or npos.
size_t findForbiddenUnit(std::u16string_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r') return i;
        if (unit >= 0xFFFE) return i;
        if (unit < 0xD800 || unit > 0xDFFF) continue;
        const bool isPair = unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        if (!isPair) return i;
        ++i;
    }
    return std::u16string_view::npos;
}

std::string base64(const std::vector<uint8_t>& bytes) {
    static constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t group = 0;
        for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
        for (size_t k = 0; k < 4; ++k) text += k <= count ? digits[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

std::string realForm(const NSNumber& number) {
    const double value = number.doubleValue();
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
    return number.description();
}

class Writer {
public:
    // Returns false, with `error()` set, if the value has no property-list form. The recursion depth is bounded.
    bool writeValue(const NSObject* value);

    std::string& text() { return text_; }
    const std::string& error() const { return error_; }

private:
    bool fail(const std::string& what);
    void startLine() { text_.append(path_.size(), '\t'); }
    void element(std::string_view name, std::string_view content);
    bool textElement(std::string_view name, const NSString& content);
    bool writeNumber(const NSNumber& number);
    bool writeDate(const NSDate& date);
    void writeData(const NSData& data);
    bool writeArray(const NSArray& array);
    bool writeDictionary(const NSDictionary& dictionary);

    std::string text_;
    std::string error_;
    // The key or index of every container that is open, outermost first.
    std::vector<std::string> path_;
};

bool Writer::fail(const std::string& what) {
    // Deep nesting has too many steps for one line.
    constexpr size_t stepsAtEachEnd = 10;
    std::string way;
    for (size_t step = 0; step < path_.size(); ++step) {
        const bool isShown = step < stepsAtEachEnd || path_.size() - step <= stepsAtEachEnd;
        if (isShown || step == stepsAtEachEnd) way += (way.empty() ? "" : " > ") + (isShown ? path_[step] : "…");
    }
    error_ = (way.empty() ? "top level" : way) + ": " + what;
    return false;
}

void Writer::element(std::string_view name, std::string_view content) {
    startLine();
    text_.append("<").append(name).append(">").append(content).append("</").append(name).append(">\n");
}

bool Writer::textElement(std::string_view name, const NSString& content) {
    const size_t forbidden = findForbiddenUnit(content.characters());
    if (forbidden != std::u16string::npos) {
        char code[8];
        std::snprintf(code, sizeof code, "U+%04X", unsigned{content.characters()[forbidden]});
        return fail(std::string(name == "key" ? "the key" : "the string") + " has the character " + code +
                    " at index " + std::to_string(forbidden) + ", which XML cannot hold");
    }
    std::string escaped;
    for (const char c : content.utf8()) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            // A bare carriage return would be read back as a line feed.
            case '\r':
                escaped += "&#13;";
                break;
            default:
                escaped += c;
        }
    }
    element(name, escaped);
    return true;
}

bool Writer::writeNumber(const NSNumber& number) {
    if (const bool* truth = std::get_if<bool>(&number.value())) {
        startLine();
        text_ += *truth ? "<true/>\n" : "<false/>\n";
    } else if (number.isReal()) {
        element("real", realForm(number));
    } else {
        element("integer", number.description());
    }
    return true;
}

bool Writer::writeDate(const NSDate& date) {
    // Seconds from 2001 to the first days of the years 0 and 10000.
    constexpr double first = -63145526400.0;
    constexpr double end = 252423993600.0;
    const double seconds = date.timeIntervalSinceReferenceDate();
    if (!(seconds >= first && seconds < end)) return fail("the date lies outside the years 0 to 9999");
    element("date", date.description());
    return true;
}

void Writer::writeData(const NSData& data) {
    const std::string content = base64(data.bytes());
    if (content.size() <= kBase64Columns) return element("data", content);
    startLine();
    text_ += "<data>\n";
    for (size_t i = 0; i < content.size(); i += kBase64Columns) {
        startLine();
        text_.append(content, i, kBase64Columns).append("\n");
    }
    startLine();
    text_ += "</data>\n";
}

bool Writer::writeArray(const NSArray& array) {
    startLine();
    if (array.count() == 0) {
        text_ += "<array/>\n";
        return true;
    }
    text_ += "<array>\n";
    for (size_t i = 0; i < array.count(); ++i) {
        path_.push_back(std::to_string(i));
        if (!writeValue(array.elements()[i].get())) return false;
        path_.pop_back();
    }
    startLine();
    text_ += "</array>\n";
    return true;
}

bool Writer::writeDictionary(const NSDictionary& dictionary) {
    startLine();
    if (dictionary.count() == 0) {
        text_ += "<dict/>\n";
        return true;
    }
    text_ += "<dict>\n";
    for (const auto& [key, value, hash] : dictionary.map().entries()) {
        const auto* name = dynamic_cast<const NSString*>(key.get());
        if (!name) return fail("the key " + key->description() + " is of class " + key->className() + ", not a string");
        path_.push_back("\"" + name->utf8() + "\"");
        if (!textElement("key", *name) || !writeValue(value.get())) return false;
        path_.pop_back();
    }
    startLine();
    text_ += "</dict>\n";
    return true;
}

bool Writer::writeValue(const NSObject* value) {
    if (path_.size() >= kDepthMax) return fail("more than " + std::to_string(kDepthMax) + " levels of nesting");
    // A small list that holds the same object in many places can make an endless file.
    if (text_.size() > Limits::kFileBytesMax)
        return fail("more than " + std::to_string(Limits::kFileBytesMax) + " bytes, the limit for reading");
    if (!value) return fail("a null object, which a property list cannot hold");
    if (const auto* string = dynamic_cast<const NSString*>(value)) return textElement("string", *string);
    if (const auto* number = dynamic_cast<const NSNumber*>(value)) return writeNumber(*number);
    if (const auto* date = dynamic_cast<const NSDate*>(value)) return writeDate(*date);
    if (const auto* array = dynamic_cast<const NSArray*>(value)) return writeArray(*array);
    if (const auto* dictionary = dynamic_cast<const NSDictionary*>(value)) return writeDictionary(*dictionary);
    const auto* data = dynamic_cast<const NSData*>(value);
    if (!data) return fail("an object of class " + value->className() + " has no property-list form");
    writeData(*data);
    return true;
}

}  // namespace

Ref<NSData> NSPropertyListSerialization::dataFromPropertyList(const Ref<NSObject>& plist, NSPropertyListFormat format,
                                                              std::string* errorDescription) {
    std::string error;
    Writer writer;
    writer.text() = kHead;
    if (format != NSPropertyListFormat::xml) {
        error = "property lists can be written only in the XML form";
    } else if (!writer.writeValue(plist.get())) {
        error = oneLine(writer.error());
    } else {
        return NSData::dataWithBytes(writer.text().append(kFoot));
    }
    if (errorDescription) *errorDescription = error;
    return {};
}

}  // namespace qz
