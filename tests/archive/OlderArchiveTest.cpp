#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/archive/QzAnnoArchiver.h"
#include "QzAnno/platform/foundation/NSAlertPanel.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/archive/Archives.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::keyIn;
using test::paletteOf;
using testing::ElementsAre;
using testing::HasSubstr;

// Stand-ins for keys and strings as older versions wrote them. Their names are as long as those of the real classes, so
// that they can be exchanged in the bytes.
struct OldKey final : NSObject {
    explicit OldKey(Ref<NSString> keyName) : name(std::move(keyName)) {}
    std::string className() const override { return "QzOldKey_"; }
    Ref<NSString> name;
};

struct OldString final : NSObject {
    std::string className() const override { return "QzOldString_"; }
    Ref<NSObject> annotations, frameKeys, text;
};

const CodedClassRegistration oldKey({.name = "QzOldKey_", .encode = [](const NSObject& key, NSArchiver& archiver) {
                                         archiver.encodeObject(static_cast<const OldKey&>(key).name);
                                     }});
const CodedClassRegistration oldString({.name = "QzOldString_",
                                        .encode = [](const NSObject& object, NSArchiver& archiver) {
                                            const auto& string = static_cast<const OldString&>(object);
                                            archiver.encodeObject(string.annotations);
                                            archiver.encodeObject(string.frameKeys);
                                            archiver.encodeObject(string.text);
                                        }});

Ref<NSData> oldArchiveOf(const Ref<NSObject>& object) {
    std::string bytes(NSArchiver::archivedDataWithRootObject(object)->view());
    for (const auto& [stand, real] :
         {std::pair<std::string_view, std::string_view>("QzOldKey_", "QzAnnoKey"), {"QzOldString_", "QzAnnoString"}}) {
        if (const size_t at = bytes.find(stand); at != std::string::npos) bytes.replace(at, real.size(), real);
    }
    return NSData::dataWithBytes(std::string_view(bytes));
}

Ref<QzAnnoString> readOld(const Ref<NSObject>& object, const Ref<QzAnnoPalette>& palette,
                          std::string* error = nullptr) {
    return std::dynamic_pointer_cast<QzAnnoString>(
        QzAnnoUnarchiver::unarchiveObjectWithData(oldArchiveOf(object), palette, error));
}

TEST(OlderArchive, KeysAreNamesThatThePaletteMayKnow) {
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold"});
    const auto read = [&](const char* name) {
        return std::dynamic_pointer_cast<QzAnnoKey>(QzAnnoUnarchiver::unarchiveObjectWithData(
            oldArchiveOf(std::make_shared<OldKey>(NSString::stringWithUTF8String(name))), palette));
    };
    EXPECT_EQ(read("Bold"), keyIn(*palette, "Bold"));
    EXPECT_EQ(read("GLOBALS"), palette->annoKeyAtPriority(0));
    const Ref<QzAnnoKey> unknown = read("Gone");
    ASSERT_TRUE(unknown);
    EXPECT_FALSE(unknown->valid());
    EXPECT_TRUE(unknown->name()->isEqual(*"Gone"_ns));

    std::string error;
    EXPECT_FALSE(QzTokeningUnarchiver::unarchiveObjectWithData(oldArchiveOf(std::make_shared<OldKey>("Bold"_ns)),
                                                               {palette}, &error));
    EXPECT_THAT(error, HasSubstr("QzAnnoUnarchiver"));
}

TEST(OlderArchive, ANamelessKeyAlertsAndIsNoObject) {
    const Ref<NSData> data = oldArchiveOf(std::make_shared<OldKey>(nullptr));
    test::LogCapture log;
    std::string error;
    EXPECT_FALSE(QzAnnoUnarchiver::unarchiveObjectWithData(data, paletteOf({}), &error));
    EXPECT_EQ(error, "");
    EXPECT_THAT(log.errors(),
                testing::Contains("Internal Error: Nil annokey name from file.  Wha? [sweet] (nilly, dilly)\n"));

    std::vector<std::string> shown;
    setCriticalAlertHook([&](const AlertPanel& panel) {
        shown = {panel.title, panel.message, panel.defaultButton, panel.alternateButton, panel.otherButton};
        return NSAlertOtherReturn;
    });
    EXPECT_FALSE(QzAnnoUnarchiver::unarchiveObjectWithData(data, paletteOf({})));
    EXPECT_THAT(shown, ElementsAre("Internal Error", "Nil annokey name from file.  Wha?", "sweet", "nilly", "dilly"));
    setCriticalAlertHook({});
}

TEST(OlderArchive, KeysOfTheWholeTextHoldAtEveryCharacter) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold", "Red"});
    const auto bold = std::make_shared<OldKey>("Bold"_ns);
    const auto red = std::make_shared<OldKey>("Red"_ns);
    std::string longText(3000, 'x');
    for (const std::string& text : {std::string("short"), longText, std::string()}) {
        const auto length = static_cast<uint32_t>(text.size());
        ObjectMap annotations;
        annotations.set(red, QzAnnoBits::initWithBytes("0110"));
        annotations.set(bold, QzAnnoBits::initWithBytes("01"));
        for (const bool asSet : {false, true}) {
            const auto old = std::make_shared<OldString>();
            old->annotations = NSDictionary::dictionaryWithMap(annotations);
            // One of them has a bit set already, the other, unknown to the palette, has none.
            const auto gone = std::make_shared<OldKey>("Gone"_ns);
            old->frameKeys = NSArray::arrayWithObjects({bold, gone});
            if (asSet) {
                ObjectMap members;
                members.set(bold, nullptr);
                members.set(gone, nullptr);
                old->frameKeys = NSSet::setWithMap(members);
            }
            old->text = NSString::stringWithUTF8String(text);
            std::string error;
            const Ref<QzAnnoString> read = readOld(old, palette, &error);
            ASSERT_TRUE(read) << error;
            EXPECT_EQ(read->string()->utf8(), text);
            EXPECT_EQ(read->allKeys()->count(), 3u);
            EXPECT_EQ(read->frame()->count(), length == 0 ? 0u : 2u);
            if (length == 0) continue;
            EXPECT_TRUE(read->frame()->containsObject(*keyIn(*palette, "Bold")));
            Range run;
            EXPECT_TRUE(read->annotation(keyIn(*palette, "Red"), 1, &run));
            EXPECT_EQ(run, (Range{1, 2}));
        }
    }
}

TEST(OlderArchive, FrameKeysOfAnotherKindAreRefused) {
    const auto old = std::make_shared<OldString>();
    old->annotations = NSDictionary::dictionary();
    old->text = "text"_ns;
    old->frameKeys = "no collection"_ns;
    std::string error;
    EXPECT_FALSE(readOld(old, paletteOf({}), &error));
    EXPECT_THAT(error, HasSubstr("neither an array nor a set but an object of class NSString"));
    old->frameKeys = NSArray::arrayWithObjects({"no key"_ns});
    EXPECT_FALSE(readOld(old, paletteOf({}), &error));
    EXPECT_THAT(error, HasSubstr("not a dictionary from annotation keys to bit sets"));
}

}  // namespace
}  // namespace qz
