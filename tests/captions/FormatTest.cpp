#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/Files.h"
#include "captions/Format.h"
#include "tests/captions/CaptionTest.h"

namespace qz {
namespace {

using testing::HasSubstr;

class FormatTest : public test::CaptionTest {
protected:
    FormatTest() : CaptionTest({"Loud"}) {}
};

TEST_F(FormatTest, FilesAreToldByTheirNamesAndByTheirContents) {
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(QZANNO_EXAMPLES)) {
        const Format* const format = formatOfPath(entry.path().string());
        if (!format) continue;
        const Ref<NSData> file = readFile(entry.path().string(), nullptr);
        EXPECT_EQ(formatOfContent(file->view()), format->begins ? format : nullptr) << entry.path();
        ++count;
    }
    EXPECT_GE(count, 3u);
    EXPECT_EQ(formatOfPath("folder.vtt/A.SRT"), formatOfPath("a.srt"));
    EXPECT_EQ(formatOfContent("\xEF\xBB\xBF[Script Info]\r\n"), formatOfPath("a.ssa"));
    EXPECT_EQ(formatOfContent("\r\n1\r\n00:00:01,000 --> 00:00:02,000\r\n"), formatOfPath("a.srt"));
    for (const char* bytes : {"", "1", "1\n", "WEBVTTX", "\x04\x0bstream"}) EXPECT_EQ(formatOfContent(bytes), nullptr);
}

TEST_F(FormatTest, WhatIsWrittenIsReadAgain) {
    for (const Format& format : formats()) {
        if (!format.write) continue;
        CaptionFile captions;
        for (const char* text : {"One\ntwo", "a < b & {c}", "\u05E9\u05DC\u05D5\u05DD"}) {
            CaptionCue cue;
            cue.start = 1.5;
            cue.end = 3;
            cue.text = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text));
            captions.cues.push_back(std::move(cue));
        }
        std::string reason;
        const auto written = format.write(captions, {CaptionLooks(palette_, {1920, 1080})}, reason);
        ASSERT_TRUE(written) << reason;
        const auto read = wholeCaptionFile(format.read, *NSData::dataWithBytes(written->file), *palette_);
        ASSERT_TRUE(read && read->cues.size() == captions.cues.size()) << format.name;
        for (size_t i = 0; i < captions.cues.size(); ++i) {
            EXPECT_TRUE(areEqual(read->cues[i].text->string(), captions.cues[i].text->string())) << format.name;
            EXPECT_EQ(read->cues[i].hasTimes, format.hasTimes());
            EXPECT_EQ(read->cues[i].end, format.hasTimes() ? 3 : 0) << format.name;
        }
        EXPECT_EQ(formatOfContent(written->file), &format);
        const bool losesTimes = (format.cannotHold & Format::times) != 0;
        EXPECT_EQ(lossesIn(format, captions).size(), losesTimes ? 1u : 0u) << format.name;
    }
}

TEST_F(FormatTest, TheDesktopOpensTheComposerForEachThatHasAType) {
    std::ifstream entry(QZANNO_DESKTOP_ENTRY);
    const std::string text(std::istreambuf_iterator<char>(entry), {});
    std::string types = "\nMimeType=";
    for (const Format& format : formats()) {
        if (!format.mimeType.empty()) types += std::string(format.mimeType) + ";";
    }
    EXPECT_THAT(text, HasSubstr(types + "\n"));
}

}  // namespace
}  // namespace qz
