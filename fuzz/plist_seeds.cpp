#include <filesystem>
#include <fstream>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "tests/support/Palettes.h"

using namespace qz;

/// Usage: plist_write_seeds FOLDER. Writes a list of every type, a palette and an unusual encoding into the folder.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const auto write = [&folder](const char* name, const Ref<NSData>& data) {
        std::ofstream(folder / name, std::ios::binary) << data->view();
    };

    const Ref<NSDictionary> every = test::dictionaryOf({
        {"text"_ns, "a < b & c \xE4\xB8\xAD"_ns},
        {"data"_ns, NSData::dataWithBytes(std::string_view("bytes"))},
        {"date"_ns, NSDate::dateWithTimeIntervalSinceReferenceDate(7e8)},
        {"numbers"_ns, NSArray::arrayWithObjects({test::integer(-3), test::number(0.1), NSNumber::numberWithBool(true),
                                                  NSNumber::numberWithLongLong(INT64_MIN)})},
    });
    write("every", NSPropertyListSerialization::dataFromPropertyList(every, NSPropertyListFormat::xml));

    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({{QzFontSizeAttribute, test::number(36)}});
    test::addAnnotation(*palette, "Box",
                        {{QzTextColorAttribute, test::rgba(1, 0, 0)},
                         {QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(test::rgba(0, 0, 0), 2)},
                         {QzBackgroundOffsetAttribute, "{3, 4}"_ns},
                         {QzBoundingMarginsAttribute, test::margins(1, 2, 3, 4)}});
    write("palette", palette->pListData());
    std::ofstream(folder / "latin") << "<?xml version='1.0' encoding='ISO-8859-1'?><array><real>nan</real><string>"
                                       "&#233;\xE9<![CDATA[<&]]></string><!-- c --></array>";
    return 0;
}
