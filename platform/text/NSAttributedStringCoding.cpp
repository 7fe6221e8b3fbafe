#include <unordered_map>
#include <vector>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {
namespace {

// Writes the text, then a number and a length for each run. Dictionaries are numbered from 1 in order, and each follows
// the first run that uses it.
void encodeAttributedString(const NSObject& object, NSArchiver& archiver) {
    const auto& string = static_cast<const NSAttributedString&>(object);
    archiver.encodeObject(string.string());
    std::unordered_map<const NSDictionary*, int32_t> numbers;
    for (uint32_t start = 0; start < string.length() && !archiver.hasFailed();) {
        Range run;
        const Ref<NSDictionary> attributes = string.attributesAtIndex(start, &run);
        const auto [known, isNew] = numbers.emplace(attributes.get(), static_cast<int32_t>(numbers.size() + 1));
        archiver.encodeValuesOfObjCTypes("iI", {known->second, run.length});
        if (isNew && !archiver.encodeObject(attributes)) {
            archiver.addPlaceOfFailure("attributes at " + std::to_string(start));
        }
        start += run.length;
    }
}

// Memory for a run and a new dictionary's list entries, besides the dictionary itself.
constexpr uint64_t kRunMemory = 128;

Ref<NSMutableAttributedString> decodeRuns(NSUnarchiver& unarchiver) {
    const auto text = unarchiver.decodeObjectOfClass<NSString>("NSString");
    if (!text && !unarchiver.hasFailed()) unarchiver.fail("an attributed string without its text");
    // The characters are copied, and once more for an immutable string.
    if (!text || !unarchiver.countMemory(uint64_t{text->length()} * 2 * sizeof(char16_t))) return {};
    const Ref<NSMutableAttributedString> string = NSMutableAttributedString::init();
    const std::u16string_view characters = text->characters();
    std::vector<Ref<NSDictionary>> dictionaries;
    while (string->length() < text->length()) {
        int32_t number = 0;
        uint32_t length = 0;
        if (!unarchiver.decodeValuesOfObjCTypes("iI", {&number, &length}) || !unarchiver.countMemory(kRunMemory))
            return {};
        const int64_t newNumber = static_cast<int64_t>(dictionaries.size()) + 1;
        if (number < 1 || number > newNumber) {
            unarchiver.fail("a run has the attributes " + std::to_string(number) + ", and those up to " +
                            std::to_string(newNumber) + " are known");
        } else if (length == 0 || length > text->length() - string->length()) {
            unarchiver.fail("a run of length " + std::to_string(length) + " at " + std::to_string(string->length()) +
                            " of a text of length " + std::to_string(text->length()));
        } else if (number == newNumber) {
            auto attributes = unarchiver.decodeObjectOfClass<NSDictionary>("NSDictionary");
            dictionaries.push_back(attributes ? std::move(attributes) : NSDictionary::dictionary());
        }
        if (unarchiver.hasFailed()) return {};
        string->appendString(characters.substr(string->length(), length),
                             dictionaries[static_cast<size_t>(number) - 1]);
    }
    return string;
}

Ref<NSObject> decodeAttributedString(NSUnarchiver& unarchiver) {
    const Ref<NSMutableAttributedString> string = decodeRuns(unarchiver);
    return string ? string->copy() : nullptr;
}

Ref<NSObject> decodeMutableAttributedString(NSUnarchiver& unarchiver) {
    return decodeRuns(unarchiver);
}

const CodedClassRegistration registration({.name = "NSAttributedString",
                                           .encode = encodeAttributedString,
                                           .decode = decodeAttributedString});
const CodedClassRegistration mutableRegistration({.name = "NSMutableAttributedString",
                                                  .superclassName = "NSAttributedString",
                                                  .encode = encodeAttributedString,
                                                  .decode = decodeMutableAttributedString});

}  // namespace
}  // namespace qz
