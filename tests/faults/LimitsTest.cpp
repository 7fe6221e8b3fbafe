// Anything beyond a limit is refused in one line, and anything at the limit is accepted.
#include <algorithm>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/model/QzAnno.h"
#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "captions/PlainText.h"
#include "captions/WebVTT.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/NSURL.h"
#include "tests/support/Palettes.h"

namespace qz {
namespace {

using testing::HasSubstr;

class Limit : public testing::Test {
protected:
    Limit() {
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
    EXPECT_THAT(error, HasSubstr("65537 annotations; 65536 is the limit"));

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
        EXPECT_EQ(wholeCaptionFile(readPlainText, *NSData::dataWithBytes(text), *palette, &problem).has_value(), fits);
        EXPECT_THAT(problem.message, HasSubstr(fits ? "" : "16777217 characters; 16777216 is the limit"));

        const auto captions =
            wholeCaptionFile(readWebVTT, *NSData::dataWithBytes("WEBVTT\n\n" + times + text + next), *palette);
        ASSERT_TRUE(captions);
        EXPECT_EQ(captions->cues.size(), fits ? 2u : 1u) << "the cue behind one that is too long is read";
        EXPECT_EQ(captions->problems.size(), fits ? 0u : 1u);
    }
}

/// A million collections inside each other, of every kind in turn, around one object.
Ref<NSObject> deepNest(const Ref<NSObject>& innermost, int levels = 1'000'000) {
    Ref<NSObject> nest = innermost;
    for (int level = 0; level < levels; ++level) {
        if (level % 4 == 0) nest = NSArray::arrayWithObjects({nest});
        if (level % 4 == 1) nest = test::dictionaryOf({{"k"_ns, nest}});
        if (level % 4 == 2) nest = NSSet::setWithObject(nest);
        if (level % 4 == 3) nest = NSArray::arrayWithObjects({nest, nest});
    }
    return nest;
}

TEST_F(Limit, OfNestingHoldsForWhatHostsMake) {
    std::string log;
    setLogHook([&](std::string_view line) { log += line; });
    const Ref<NSString> innermost = "x"_ns;
    {
        const Ref<NSObject> nest = deepNest(innermost), other = deepNest(innermost);
        EXPECT_TRUE(nest->isEqual(*nest));
        EXPECT_FALSE(nest->isEqual(*other)) << "as deep as that nobody looks";
        EXPECT_THAT(log, HasSubstr("more than 512 deep"));
        EXPECT_EQ(std::ranges::count(log, '\n'), 1) << "one line for one comparison";
        EXPECT_THAT(nest->description(), HasSubstr("…"));
        EXPECT_TRUE(deepNest(innermost, 8)->isEqual(*deepNest(innermost, 8))) << "the walk before left nothing behind";
        Ref<NSURL> url;
        for (int level = 0; level < 1'000'000; ++level) url = NSURL::URLWithString("u"_ns, url);
        EXPECT_TRUE(url->isEqual(*NSURL::URLWithString("u"_ns, url->baseURL())));
    }
    EXPECT_EQ(innermost.use_count(), 1) << "all of it is freed, and without a stack as deep";

    // A list of thirty objects that would be written as 2^30.
    Ref<NSObject> doubled = NSArray::array();
    for (int level = 0; level < 30; ++level) doubled = NSArray::arrayWithObjects({doubled, doubled});
    std::string error;
    EXPECT_FALSE(NSPropertyListSerialization::dataFromPropertyList(doubled, NSPropertyListFormat::xml, &error));
    EXPECT_THAT(error, HasSubstr("more than 268435456 bytes"));
    EXPECT_FALSE(NSArchiver::archivedDataWithRootObject(doubled, &error));
}

TEST_F(Limit, OfCirclesIsTheirFirstRound) {
    const Ref<QzMutableAnno> anno = QzAnno::initWithKey(QzAnnoKey::keyWithName("a"_ns))->mutableCopy();
    const auto text = NSMutableAttributedString::initWithAttributedString(*NSAttributedString::initWithString("t"_ns));
    const std::pair<Ref<NSObject>, std::function<void(Ref<NSObject>)>> holders[] = {
        {anno, [&](const Ref<NSObject>& held) { anno->setAttribute("held"_ns, held); }},
        {text, [&](const Ref<NSObject>& held) {
             held ? text->addAttribute("held"_ns, held, {0, 1}) : text->removeAttribute(*"held"_ns, {0, 1});
         }}};
    for (const auto& [holder, hold] : holders) {
        const Ref<NSArray> other = NSArray::arrayWithObjects({holder});
        hold(other);
        std::string error;
        EXPECT_FALSE(NSArchiver::archivedDataWithRootObject(holder, &error));
        EXPECT_THAT(error, testing::EndsWith("that holds itself, which readers refuse"));
        EXPECT_THAT(other->description(), HasSubstr("…"));
        EXPECT_TRUE(other->isEqual(*NSArray::arrayWithObjects({holder}))) << "the same object needs no look inside";
        hold({});
    }
}

}  // namespace
}  // namespace qz
