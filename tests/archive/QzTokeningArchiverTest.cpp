#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/archive/QzAnnoArchiver.h"
#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/platform/foundation/NSAlertPanel.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/archive/Archives.h"
#include "tests/foundation/StreamBytes.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::keyIn;
using test::paletteOf;
using test::readString;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

/// "One two", with Bold on its first word and Red from the second letter on.
Ref<QzMutableAnnoString> sampleString(const QzAnnoPalette& palette) {
    const Ref<QzMutableAnnoString> string = QzMutableAnnoString::initWithString("One two"_ns);
    string->addAnno(keyIn(palette, "Bold"), {0, 3});
    string->addAnno(keyIn(palette, "Red"), {1, 6});
    return string;
}

TEST(QzTokeningArchiver, KeysBecomeThoseOfTheReadersPalette) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> writers = paletteOf({"Bold", "Red"});
    const Ref<QzAnnoString> string = sampleString(*writers)->copy();
    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(string, {writers});

    const Ref<QzAnnoString> same = readString(data, {writers});
    ASSERT_TRUE(same);
    EXPECT_TRUE(same->isEqual(*string));

    const Ref<QzAnnoPalette> readers = paletteOf({"Red", "Italic", "Bold"});
    const Ref<QzAnnoString> other = readString(data, {readers});
    ASSERT_TRUE(other);
    EXPECT_FALSE(other->isEqual(*string));
    EXPECT_TRUE(other->isEqual(*sampleString(*readers)->copy()));

    // A name missing from the palette becomes the global key, which keeps its positions.
    const Ref<QzAnnoPalette> lacking = paletteOf({"Red"});
    const Ref<QzAnnoKey> global = lacking->annoKeyAtPriority(0);
    const Ref<QzAnnoString> partly = readString(data, {lacking});
    ASSERT_TRUE(partly);
    Range run;
    EXPECT_TRUE(partly->annotation(global, 0, &run));
    EXPECT_EQ(run, (Range{0, 3}));
    EXPECT_TRUE(partly->annotation(keyIn(*lacking, "Red"), 6));
}

TEST(QzTokeningArchiver, WhatAnyOfTheUnknownNamesMarkedIsKept) {
    const test::LogCapture log;
    const Ref<QzAnnoPalette> writers = paletteOf({"Bold", "Red"}), none = paletteOf({});
    const struct {
        const char *bold, *red, *united, *reason;
    } cases[] = {
        {"xx-----", "-----xx", "xx---xx", "apart"},
        {"-----xx", "xx-----", "xx---xx", "the later one before the earlier one"},
        {"-xxx---", "--xxx--", "-xxxx--", "over each other"},
        {"-------", "x-x-x-x", "x-x-x-x", "nothing, and many runs"},
    };
    for (const auto& [bold, red, united, reason] : cases) {
        const auto title = QzMutableAnnoString::initWithString("One two"_ns);
        for (const auto& [name, marks] : {std::pair("Bold", bold), {"Red", red}}) {
            title->removeAnno(keyIn(*writers, name), {0, 7});
            for (uint32_t i = 0; i < 7; ++i)
                if (marks[i] == 'x') title->addAnno(keyIn(*writers, name), {i, 1});
        }
        const auto read = readString(QzTokeningArchiver::archivedDataWithRootObject(title, {writers}), {none});
        ASSERT_TRUE(read) << reason;
        std::string marked;
        for (uint32_t i = 0; i < 7; ++i) marked += read->annotation(none->annoKeyAtPriority(0), i) ? 'x' : '-';
        EXPECT_EQ(marked, united) << reason;
    }
}

TEST(QzTokeningArchiver, SharedKeysStandOnceAndKeepTheNameTheyWereWrittenWith) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold", "Red"});
    const Ref<NSArray> strings =
        NSArray::arrayWithObjects({sampleString(*palette), sampleString(*palette), sampleString(*palette)->copy()});
    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(strings, {palette});
    EXPECT_EQ(log.lines().size(), 2u) << "one line for each key, however many strings use it";
    EXPECT_THAT(log.lines(), Contains("Encoded Bold for " + keyIn(*palette, "Bold")->description() + "\n"));

    log.clear();
    keyIn(*palette, "Bold")->setName("Strong"_ns);
    const Ref<QzAnnoPalette> readers = paletteOf({"Bold", "Red"});
    const auto read =
        std::dynamic_pointer_cast<NSArray>(QzTokeningUnarchiver::unarchiveObjectWithData(data, {readers}));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->count(), 3u);
    EXPECT_EQ(read->elements()[0]->className(), "QzMutableAnnoString");
    EXPECT_EQ(read->elements()[2]->className(), "QzAnnoString");
    EXPECT_TRUE(read->elements()[2]->isEqual(*sampleString(*readers)->copy()));
    EXPECT_THAT(log.lines(), Contains("Decoded " + keyIn(*readers, "Bold")->description() + " for Bold\n"));
}

TEST(QzTokeningArchiver, WithoutATableAPlaceholderIsWritten) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold", "Red"});
    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(sampleString(*palette), {});
    ASSERT_TRUE(data);
    EXPECT_EQ(log.lines().size(), 2u) << "one line for each key";
    const Ref<QzAnnoString> read = readString(data, {palette});
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->string()->isEqual(*"One two"_ns));
    EXPECT_EQ(read->allKeys()->count(), 0u);
    EXPECT_EQ(log.lines().size(), 5u) << "one line for each key, and one for the entries that are dropped";
}

TEST(QzTokeningArchiver, BytesOfAnArchivedString) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"B"});
    ObjectMap annotations;
    annotations.set(keyIn(*palette, "B"), QzAnnoBits::initWithBytes("110"));
    const Ref<QzAnnoString> string = QzAnnoString::initWithString("ab"_ns);
    MutableSupport::setAnnotations(*string, NSDictionary::dictionaryWithMap(annotations), false);

    // Shared strings: 0 "@", 1 QzAnnoString, 2 NSObject, 3 NSDictionary, 4 "i", 5 QzAnnoKey, 6 NSNumber, 7 NSValue,
    // 8 "*", 9 NSString, 10 "+", 11 QzAnnoBits, 12 "I", 13 "[3c]". Objects, classes and C strings: 0 the string,
    // 1 QzAnnoString, 2 NSObject, 3 the dictionary, 4 NSDictionary, 5 the key, 6 QzAnnoKey, 7 the number, 8 NSNumber,
    // 9 NSValue, 10 its type code, 11 the type's name, 12 NSString, 13 the key's name, 14 the bits, 15 QzAnnoBits.
    test::StreamBytes bytes;
    bytes.text("@").object().cls("QzAnnoString", 1).cls("NSObject").nil();
    bytes.ref(0).object().cls("NSDictionary").ref(2).text("i").byte(1);
    bytes.ref(0).object().cls("QzAnnoKey", 1).ref(2);
    bytes.ref(0).object().cls("NSNumber").cls("NSValue").ref(2).text("*").byte(0x84).ref(4).ref(4).byte(1).end();
    bytes.ref(0).object().cls("NSString", 1).ref(2).text("+").byte(9).raw("QzAnnoKey").end();
    bytes.ref(0).object().ref(12).ref(10).byte(1).raw("B").end().end();
    bytes.ref(0).object().cls("QzAnnoBits").ref(2).text("I").byte(3).text("[3c]").raw("110").end().end();
    bytes.ref(0).object().ref(12).ref(10).byte(2).raw("ab").end().end();
    EXPECT_EQ(QzTokeningArchiver::archivedDataWithRootObject(string, {palette})->view(), bytes.bytes());
}

TEST(QzTokeningArchiver, OtherCodersSayWhichOneIsNeeded) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold", "Red"});
    const Ref<QzAnnoString> string = sampleString(*palette);
    std::string error;
    EXPECT_FALSE(NSArchiver::archivedDataWithRootObject(string, &error));
    EXPECT_THAT(error, HasSubstr("only a QzTokeningArchiver"));
    EXPECT_FALSE(QzAnnoArchiver::archivedDataWithRootObject(string, palette, &error));
    EXPECT_THAT(error, HasSubstr("only a QzTokeningArchiver"));

    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(string, {palette});
    EXPECT_FALSE(QzAnnoUnarchiver::unarchiveObjectWithData(data, palette, &error));
    EXPECT_THAT(error, HasSubstr("QzTokeningUnarchiver"));
    // The error is optional.
    EXPECT_FALSE(QzAnnoArchiver::archivedDataWithRootObject(string, palette));
    EXPECT_FALSE(QzAnnoUnarchiver::unarchiveObjectWithData(data, palette));
    EXPECT_FALSE(QzTokeningUnarchiver::unarchiveObjectWithData(NSData::data(), {palette}));
}

// A table for a host's own kind of token, which records its calls.
class Speakers final : public QzTokenTable {
public:
    struct Speaker final : public QzToken {
        explicit Speaker(Ref<NSString> speakerName) : name(std::move(speakerName)) {}
        Ref<NSString> tokenType() const override { return "Speaker"_ns; }
        std::string className() const override { return "QzSpeakerOfATest"; }
        Ref<NSString> name;
    };

    Ref<NSString> tokenType() const override { return "Speaker"_ns; }
    Ref<NSString> nameForToken(const QzToken& token) const override { return static_cast<const Speaker&>(token).name; }
    Ref<QzToken> tokenForName(const Ref<NSString>& name) const override { return std::make_shared<Speaker>(name); }
};

const CodedClassRegistration speakerRegistration(
    {.name = "QzSpeakerOfATest",
     .encode =
         [](const NSObject& speaker, NSArchiver& archiver) {
             static_cast<QzTokeningArchiver&>(archiver).encodeTokenObject(static_cast<const QzToken&>(speaker));
         },
     .decode = [](NSUnarchiver& unarchiver) -> Ref<NSObject> {
         return static_cast<QzTokeningUnarchiver&>(unarchiver).decodeTokenObject();
     }});

TEST(QzTokeningArchiver, TokensOfSeveralTypesGoToTheirTablesAndTheLaterTableOfATypeServes) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteOf({"Bold"});
    const Ref<QzAnnoPalette> later = paletteOf({"Bold"});
    const auto speakers = std::make_shared<Speakers>();
    const Ref<NSArray> tokens = NSArray::arrayWithObjects(
        {std::make_shared<Speakers::Speaker>("Ann"_ns), keyIn(*palette, "Bold"), palette->annoKeyAtPriority(0)});
    const std::vector<Ref<QzTokenTable>> tables = {palette, speakers, later};
    const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(tokens, tables);
    const auto read = std::dynamic_pointer_cast<NSArray>(QzTokeningUnarchiver::unarchiveObjectWithData(data, tables));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->count(), 3u);
    EXPECT_TRUE(dynamic_cast<const Speakers::Speaker&>(*read->elements()[0]).name->isEqual(*"Ann"_ns));
    EXPECT_EQ(read->elements()[1], keyIn(*later, "Bold"));
    EXPECT_EQ(read->elements()[2], later->annoKeyAtPriority(0));
}

// Stand-ins for keys and strings as written by older versions. Their names are as long as the real classes', so that
// they can be replaced in the bytes.
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
            // The first has a bit set already; the second is unknown to the palette and has no bit set.
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
