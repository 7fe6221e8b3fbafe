#include <filesystem>
#include <fstream>
#include <utility>

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/Palettes.h"

using namespace qz;

/// Usage: archive_seeds FOLDER. Creates the folder and writes archives of a title, of titles and of a palette.
int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    std::filesystem::create_directories(folder);
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({{QzFontSizeAttribute, test::number(36)}});
    const Ref<QzAnnoKey> bold = test::addAnnotation(*palette, "Bold", {{QzTextColorAttribute, test::rgba(1, 0, 0)}});
    const Ref<QzAnnoKey> box =
        test::addAnnotation(*palette, "Box",
                            {{QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(test::rgba(0, 0, 0), 2)},
                             {QzBoundingMarginsAttribute, test::margins(1, 2, 3, 4)}});
    const Ref<QzAnnoString> title = QzAnnoString::initWithString("A title"_ns);
    ObjectMap annotations;
    annotations.set(bold, QzAnnoBits::initWithBytes("0110000"));
    annotations.set(box, QzAnnoBits::initWithBytes("11111111"));
    MutableSupport::setAnnotations(*title, NSDictionary::dictionaryWithMap(annotations), false);
    const std::pair<const char*, Ref<NSObject>> seeds[] = {
        {"title", title},
        {"titles", NSArray::arrayWithObjects({title, title->mutableCopy(), palette})},
        {"palette", palette}};
    for (const auto& [name, object] : seeds) {
        const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(object, {palette});
        if (!data) return 1;
        std::ofstream(folder / name, std::ios::binary) << data->view();
    }
    return 0;
}
