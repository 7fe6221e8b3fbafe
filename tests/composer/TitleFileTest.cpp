#include <gmock/gmock.h>

#include "QzAnno_AnnotatedTextFramework/archive/PaletteData.h"
#include "apps/qzanno-composer/TitleFile.h"
#include "platform/foundation/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz::composer {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class TitleFiles : public testing::Test {
protected:
    std::string errorOf(const std::string& name, const char* content) {
        if (content) writeText(folder.file(name), content);
        std::string error;
        EXPECT_FALSE(readTitleFile(folder.file(name), palette, error)) << name;
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_THAT(error, StartsWith(folder.file(name) + ":"));
        return error;
    }

    test::LogCapture log;
    TemporaryFolder folder;
    Ref<QzAnnoPalette> palette = test::paletteWithGlobals({});
    Ref<QzAnnoKey> key = test::addAnnotation(*palette, "Lower Third", {});
};

TEST_F(TitleFiles, comeBackFromAnArchiveWithTheKeysOfThePalette) {
    const auto first = QzMutableAnnoString::initWithString("one \U0001F600"_ns);
    first->addAnno(key, {0, 3});
    const auto second = QzMutableAnnoString::initWithString("two"_ns);
    second->addFrameAnno(key);
    for (const size_t count : {size_t{1}, size_t{2}}) {
        std::vector<Title> titles = {{first->copy(), {}, {}}, {second->copy(), {}, {}}};
        titles.resize(count);
        std::string error;
        ASSERT_TRUE(writeTitleFile(folder.file("t.annostring"), titles, palette, error)) << error;
        const auto read = readTitleFile(folder.file("t.annostring"), palette, error);
        ASSERT_TRUE(read) << error;
        ASSERT_EQ(read->titles.size(), count);
        for (size_t i = 0; i < count; ++i) EXPECT_TRUE(read->titles[i].text->isEqualToAnnoString(*titles[i].text)) << i;
    }
}

TEST_F(TitleFiles, thatCannotBeReadSayWhatAndWhere) {
    EXPECT_THAT(errorOf("none.vtt", nullptr), HasSubstr("No such file"));
    EXPECT_THAT(errorOf("t.doc", "x"), HasSubstr(".vtt, .srt"));
    EXPECT_THAT(errorOf("empty.srt", "x"), HasSubstr("holds no captions"));
    EXPECT_THAT(errorOf("empty.vtt", "WEBVTT\n"), HasSubstr("holds no captions"));
    EXPECT_THAT(errorOf("not.vtt", "hello"), HasSubstr(":1:"));
    errorOf("latin.txt", "caf\xe9");
    errorOf("damaged.annostring", "\x04\x0bstreamtyped");
    std::string error;
    writeText(folder.file("kept.annostring"), "kept");
    EXPECT_FALSE(
        writeTitleFile(folder.file("no folder/t.annostring"), {{QzAnnoString::init(), {}, {}}}, palette, error));
    EXPECT_THAT(error, HasSubstr("no folder"));
    EXPECT_FALSE(readPaletteFile(folder.file("kept.annostring"), error));
    EXPECT_THAT(error, StartsWith(folder.file("kept.annostring") + ": "));
}

TEST_F(TitleFiles, ofPalettesAreReadInEitherFormAndNamedByTheirEnding) {
    for (const std::string name : {"p.plist", "p.annopalette"}) {
        const Ref<NSData> data = dataOfPalette(palette, name);
        ASSERT_TRUE(data);
        EXPECT_EQ(isArchive(*data), name == "p.annopalette");
        std::string error;
        ASSERT_TRUE(writeFileAtomically(folder.file(name), data->bytes(), &error));
        const Ref<QzAnnoPalette> read = readPaletteFile(folder.file(name), error);
        ASSERT_TRUE(read) << error;
        EXPECT_EQ(read->pListData()->view(), palette->pListData()->view());
    }
}

TEST_F(TitleFiles, keepTheTimesOfCaptionsAndWarnOfUnknownClasses) {
    writeText(folder.file("c.vtt"), "WEBVTT\n\n00:01.000 --> 00:02.500\n<c.Lower_Third>a</c><c.Nobody>b</c>\n");
    std::string error;
    const auto file = readTitleFile(folder.file("c.vtt"), palette, error);
    ASSERT_TRUE(file) << error;
    EXPECT_EQ(file->titles[0].start, 1.0);
    EXPECT_EQ(file->titles[0].end, 2.5);
    EXPECT_TRUE(file->titles[0].text->annotation(*key, 0));
    EXPECT_THAT(file->warnings, testing::ElementsAre(HasSubstr("c.vtt:4: ")));
}

}  // namespace
}  // namespace qz::composer
