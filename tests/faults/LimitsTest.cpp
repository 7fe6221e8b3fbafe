// What is more than a limit is refused in one line, and what is at the limit is not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "captions/PlainText.h"
#include "captions/WebVTT.h"
#include "platform/foundation/Limits.h"
#include "platform/foundation/NSLog.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using testing::HasSubstr;

class Limit : public testing::Test {
protected:
    Limit() {
        setLogHook([](std::string_view) {});
        setStandardErrorHook([](std::string_view) {});
    }
    ~Limit() override {
        setLogHook({});
        setStandardErrorHook({});
    }
};

std::string listWith(int32_t annotations) {
    std::string list = "<plist><dict><key>Version</key><integer>0</integer><key>Palette</key><array><dict/>";
    for (int32_t i = 0; i < annotations; ++i) list += "<dict><key>__Annotation Name</key><string>x</string></dict>";
    return list + "</array></dict></plist>";
}

TEST_F(Limit, OfAPaletteHoldsForFilesAndForHosts) {
    std::string error;
    const auto read = [&](int32_t annotations) {
        return QzAnnoPalette::paletteFromPListData(*NSData::dataWithBytes(listWith(annotations)), &error);
    };
    const Ref<QzAnnoPalette> full = read(Limits::kAnnotationsMax);
    ASSERT_TRUE(full) << error;
    EXPECT_FALSE(read(Limits::kAnnotationsMax + 1));
    EXPECT_THAT(error, HasSubstr("65537 annotations; 65536 are the most"));

    full->setUndoManager(NSUndoManager::init());
    EXPECT_FALSE(full->createAnno("one more"_ns));
    EXPECT_TRUE(full->removeAnno(full->annoKeyAtPriority(1)));
    EXPECT_TRUE(full->createAnno("again room"_ns));
}

TEST_F(Limit, OfATitleHoldsForTextsAndCues) {
    const std::string whole(Limits::kTitleUnitsMax, 'a');
    const std::string times = "1\n00:01.000 --> 00:02.000\n", next = "\n\n00:03.000 --> 00:04.000\nnext\n";
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    const struct {
        std::string text;
        bool fits;
    } cases[] = {{whole, true}, {whole + "a", false}};
    for (const auto& [text, fits] : cases) {
        CaptionProblem problem;
        EXPECT_EQ(readPlainText(*NSData::dataWithBytes(text), &problem).has_value(), fits);
        EXPECT_THAT(problem.message, HasSubstr(fits ? "" : "16777217 characters; 16777216 are the most"));

        const auto captions = readWebVTT(*NSData::dataWithBytes("WEBVTT\n\n" + times + text + next), *palette);
        ASSERT_TRUE(captions);
        EXPECT_EQ(captions->cues.size(), fits ? 2u : 1u) << "the cue behind one that is too long is read";
        EXPECT_EQ(captions->problems.size(), fits ? 0u : 1u);
    }
}

}  // namespace
}  // namespace qz
