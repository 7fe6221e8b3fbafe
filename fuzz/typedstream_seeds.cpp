#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSNull.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/ObjectMap.h"

using namespace qz;

namespace {

Ref<NSDictionary> dictionary(const Ref<NSString>& key, const Ref<NSObject>& value) {
    ObjectMap map;
    map.set(key, value);
    map.set("again"_ns, value);
    return NSDictionary::dictionaryWithMap(map);
}

Ref<NSObject> attributedString() {
    const auto string = NSMutableAttributedString::init();
    const auto plain = dictionary("NSFont"_ns, NSFont::titleBarFontOfSize(40.5f));
    string->appendString(u"A ti", plain);
    string->appendString(u"tle", dictionary("NSColor"_ns, NSColor::colorWithCalibratedRed(1, 0.5f, 0, 1)));
    string->appendString(u" twice", plain);
    return string;
}

Ref<NSObject> everyNumber() {
    return NSArray::arrayWithObjects({NSNumber::numberWithBool(true), NSNumber::numberWithInt(-300),
                                      NSNumber::numberWithLongLong(INT64_MIN), NSNumber::numberWithFloat(0.1f),
                                      NSNumber::numberWithDouble(-0.0)});
}

}  // namespace

/// Usage: typedstream_seeds FOLDER. Creates the folder and writes one archive of each class.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const Ref<NSString> text = "shared \xE4\xB8\xAD\xE6\x96\x87"_ns;
    const std::pair<const char*, Ref<NSObject>> seeds[] = {
        {"string", text},
        {"numbers", everyNumber()},
        {"array", NSArray::arrayWithObjects({text, NSArray::array(), text, NSNull::null()})},
        {"dictionary", dictionary(text, NSSet::setWithObject(text))},
        {"data", NSData::dataWithBytes(std::string(300, '1'))},
        {"date", NSDate::dateWithTimeIntervalSinceReferenceDate(700000000.523)},
        {"url", NSURL::URLWithString("page"_ns, NSURL::URLWithString(text))},
        {"white", NSColor::colorWithCalibratedWhite(0.5f, 1)},
        {"named", NSColor::colorWithCatalogName("System"_ns, "textColor"_ns)},
        {"attributed", attributedString()},
    };
    for (const auto& [name, object] : seeds) {
        std::string error;
        const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(object, &error);
        if (!data) return std::fprintf(stderr, "%s: %s\n", name, error.c_str()), 1;
        std::ofstream file(folder / name, std::ios::binary);
        if (!file.write(data->view().data(), static_cast<std::streamsize>(data->length()))) return 1;
    }
    return 0;
}
