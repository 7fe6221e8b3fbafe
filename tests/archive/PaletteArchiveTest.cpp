#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "platform/foundation/NSDate.h"
#include "tests/archive/Archives.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::addAnnotation;
using test::codedAs;
using test::integer;
using test::number;
using test::paletteWithGlobals;
using test::rgba;
using testing::HasSubstr;

Ref<QzAnnoPalette> readPalette(const Ref<NSData>& data, std::string* error = nullptr) {
    return std::dynamic_pointer_cast<QzAnnoPalette>(NSUnarchiver::unarchiveObjectWithData(data, error));
}

TEST(PaletteArchive, CarriesWhatThePropertyListCarries) {
    test::LogCapture log;
    // Two annotations of one name, and the global annotation's name above it: files may hold both.
    const Ref<QzAnnoPalette> palette =
        paletteWithGlobals({{QzFontAttribute, "DejaVu Sans"_ns}, {QzFontSizeAttribute, number(48.5)}});
    addAnnotation(
        *palette, "Box",
        {{QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(rgba(0.125f, 0.25f, 0.5f, 0.75f), 2)},
         {QzBoldAttribute, integer(0)},
         {QzUnderlineAttribute, integer(1)},
         {QzBoundingMarginsAttribute, test::margins(1, 2.25, 3, 4)}});
    addAnnotation(*palette, "Twice", {{QzTextColorAttribute, rgba(1, 0, 0)}});
    addAnnotation(*palette, "Twice",
                  {{"When"_ns, NSDate::dateWithTimeIntervalSinceReferenceDate(7)},
                   {"Own"_ns, NSData::dataWithBytes("\x01\xFF")},
                   {QzHorizontalAlignmentAttribute, integer(2)}});
    const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(palette);
    ASSERT_TRUE(data);
    std::string error;
    const Ref<QzAnnoPalette> read = readPalette(data, &error);
    ASSERT_TRUE(read) << error;
    EXPECT_FALSE(read->editable());
    EXPECT_EQ(read->maxPriority(), 3);
    for (int32_t priority = 0; priority <= 3; ++priority) {
        EXPECT_EQ(read->annoKeyAtPriority(priority)->palette(), read);
        EXPECT_EQ(read->lookupPrio(read->annoKeyAtPriority(priority)), priority);
    }
    EXPECT_TRUE(read->annoKeyAtPriority(0)->isDefault());
    EXPECT_EQ(read->pListData()->view(), palette->pListData()->view());
    EXPECT_EQ(NSArchiver::archivedDataWithRootObject(read)->view(), data->view());
    EXPECT_TRUE(log.lines().empty());
}

TEST(PaletteArchive, AFileIsReadByWhatItHoldsAndWrittenByItsName) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = test::paletteOf({"Title"});
    for (const char* name : {"a.annopalette", "a.plist", "a"}) {
        const Ref<NSData> data = dataOfPalette(palette, name);
        EXPECT_EQ(isArchive(*data), std::string_view(name) == "a.annopalette");
        const Ref<QzAnnoPalette> read = paletteFromData(data);
        ASSERT_TRUE(read) << name;
        EXPECT_EQ(read->pListData()->view(), palette->pListData()->view());
    }
    const Ref<QzMutableAnnoString> title = QzMutableAnnoString::initWithString("text"_ns);
    title->addAnno(palette->annoKeyAtPriority(1), {0, 2});
    std::string later(NSArchiver::archivedDataWithRootObject(palette)->view());
    later[later.find("QzAnnoPalette") + std::string_view("QzAnnoPalette").size()] = 7;
    const struct {
        Ref<NSData> data;
        const char* error;
    } others[] = {
        {QzTokeningArchiver::archivedDataWithRootObject(title, {palette}), "holds titles, not a palette"},
        {NSArchiver::archivedDataWithRootObject("x"_ns), "holds an object of class NSString, not a palette"},
        {NSData::dataWithBytes(std::string_view(later)), "holds no palette of a version that can be read"},
        {NSData::dataWithBytes(NSArchiver::archivedDataWithRootObject(palette)->view().substr(0, 60)), "byte "},
        {NSData::dataWithBytes(std::string_view("palette")), "not well-formed XML"},
        {{}, ""},
    };
    for (const auto& [data, expected] : others) {
        std::string error;
        EXPECT_FALSE(paletteFromData(data, &error));
        EXPECT_FALSE(paletteFromData(data)) << "without an error to fill";
        EXPECT_THAT(error, HasSubstr(expected));
    }
}

TEST(PaletteArchive, KeepsTheNameOfTheGlobalAnnotationAndOneOfTwoThatAreTheSame) {
    test::LogCapture log;
    const Ref<QzAnno> renamed = QzAnno::initWithKey(QzAnnoKey::initWithName("Base"_ns));
    const Ref<QzAnno> twice = QzAnno::initWithKey(QzAnnoKey::initWithName("Twice"_ns));
    const Ref<QzAnnoPalette> read = readPalette(codedAs("QzAnnoPalette", [&](NSArchiver& archiver) {
        archiver.encodeObject(renamed);
        archiver.encodeObject(NSArray::arrayWithObjects({twice, renamed->mutableCopy(), twice}));
    }));
    ASSERT_TRUE(read);
    EXPECT_THAT(log.lines(), testing::ElementsAre(HasSubstr("nonglobal Twice")));
    EXPECT_THAT(log.errors(), testing::IsEmpty()) << "only init says that a palette was made";
    ASSERT_EQ(read->maxPriority(), 2);
    EXPECT_TRUE(read->annoKeyAtPriority(0)->name()->isEqual(*"GLOBALS"_ns));
    EXPECT_TRUE(read->annoKeyAtPriority(1)->name()->isEqual(*"Twice"_ns));
    EXPECT_TRUE(read->annoKeyAtPriority(2)->name()->isEqual(*"Base"_ns));
    read->setUndoManager(NSUndoManager::init());
    EXPECT_TRUE(read->removeAnno(read->annoKeyAtPriority(1)));
    EXPECT_TRUE(read->annoKeyAtPriority(1)->name()->isEqual(*"Base"_ns)) << "it stood there once";
}

TEST(PaletteArchive, WhatWouldBreakAPaletteIsRefused) {
    const Ref<QzAnno> anno = QzAnno::initWithKey(QzAnnoKey::initWithName("A"_ns));
    struct Case {
        Ref<NSObject> globals, annotations;
        const char* error;
    };
    const Case cases[] = {
        {nullptr, NSArray::array(), "needs its global annotation"},
        {anno, nullptr, "an array of the others"},
        {"A"_ns, NSArray::array(), "where one of class QzAnno is expected"},
        {anno, "A"_ns, "where one of class NSArray is expected"},
        {anno, NSArray::arrayWithObjects({"A"_ns}), "class NSString among the annotations"},
    };
    for (const auto& [globals, annotations, expected] : cases) {
        std::string error;
        EXPECT_FALSE(readPalette(codedAs("QzAnnoPalette",
                                         [&](NSArchiver& archiver) {
                                             archiver.encodeObject(globals);
                                             archiver.encodeObject(annotations);
                                         }),
                                 &error));
        EXPECT_THAT(error, HasSubstr(expected));
    }
}

TEST(PaletteArchive, OtherVersionsYieldNoObjectAndNoMessage) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = paletteWithGlobals({{"Box"_ns, QzBBoxInfo::initWithColor(rgba(1, 1, 1), 1)}});
    const std::string written(NSArchiver::archivedDataWithRootObject(palette)->view());
    for (const std::string className : {"QzAnnoPalette", "QzAnno", "QzBBoxInfo"}) {
        std::string bytes = written;
        const std::string record = static_cast<char>(className.size()) + className;
        bytes[bytes.find(record) + record.size()] = 5;
        std::string error;
        const Ref<QzAnnoPalette> read = readPalette(NSData::dataWithBytes(std::string_view(bytes)), &error);
        if (className == "QzAnnoPalette") {
            EXPECT_FALSE(read);
            EXPECT_EQ(error, "");
        } else if (className == "QzAnno") {
            EXPECT_THAT(error, HasSubstr("needs its global annotation"));
        } else {
            ASSERT_TRUE(read) << error;
            EXPECT_EQ(read->lookupAnno({})->allAttributes()->count(), 0u);
        }
    }
}

}  // namespace
}  // namespace qz
