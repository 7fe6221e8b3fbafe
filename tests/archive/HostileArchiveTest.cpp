#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "platform/foundation/NSLog.h"
#include "tests/archive/Archives.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::codedAs;
using testing::HasSubstr;

// The tables of a reader that has read nothing yet, a palette that is given up again, and one line of error.
constexpr size_t kBytesOfEmptyReader = 12 * 1024;

struct Reading {
    Ref<NSObject> object;
    std::string error;
    size_t peakBytes = 0;
};

Reading read(const Ref<NSData>& data, const Ref<QzAnnoPalette>& palette) {
    Reading reading;
    const test::AllocationPeak peak;
    reading.object = QzTokeningUnarchiver::unarchiveObjectWithData(data, {palette}, &reading.error);
    reading.peakBytes = peak.bytes();
    return reading;
}

// A palette and titles against it: each class of the library with a coded form, in about 4 KB.
Ref<NSData> archive(const Ref<QzAnnoPalette>& palette) {
    std::vector<Ref<NSObject>> objects = {palette};
    for (uint32_t i = 0; i < 12; ++i) {
        const Ref<QzMutableAnnoString> title =
            QzMutableAnnoString::initWithString(NSString::stringWithUTF8String("Title " + std::to_string(i)));
        ObjectMap annotations;
        annotations.set(palette->annoKeyAtPriority(1), QzAnnoBits::initWithBytes(std::string(100 + i, '1')));
        annotations.set(palette->annoKeyAtPriority(2), QzAnnoBits::initWithBytes(std::string(50, '0')));
        MutableSupport::setAnnotations(*title, NSDictionary::dictionaryWithMap(annotations), false);
        objects.push_back(title);
        objects.push_back(title->copy());
    }
    return QzTokeningArchiver::archivedDataWithRootObject(NSArray::arrayWithObjects(objects), {palette});
}

Ref<QzAnnoPalette> samplePalette() {
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({{QzFontSizeAttribute, test::number(36)}});
    for (const char* name : {"Bold", "Red", "Lower Third"}) {
        test::addAnnotation(
            *palette, name,
            {{QzTextColorAttribute, test::rgba(1, 0.5f, 0)}, {QzBoundingMarginsAttribute, test::margins(1, 2, 3, 4)}});
    }
    return palette;
}

TEST(HostileArchive, EveryTruncationIsRefusedInLittleMemory) {
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = samplePalette();
    const Ref<NSData> whole = archive(palette);
    ASSERT_GT(whole->length(), 4000u);
    for (size_t length = 0; length < whole->length(); ++length) {
        const Reading reading = read(NSData::dataWithBytes(whole->view().substr(0, length)), palette);
        ASSERT_FALSE(reading.object) << length;
        ASSERT_THAT(reading.error, HasSubstr("byte ")) << length;
        ASSERT_LE(reading.peakBytes, 16 * length + kBytesOfEmptyReader) << length;
    }
    const Reading reading = read(whole, palette);
    ASSERT_TRUE(reading.object) << reading.error;
    EXPECT_LE(reading.peakBytes, 16 * whole->length());
    setStandardErrorHook({});
}

TEST(HostileArchive, EverySingleByteChangeEndsInLittleMemory) {
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = samplePalette();
    const Ref<NSData> whole = archive(palette);
    size_t refused = 0;
    for (size_t at = 0; at < whole->length(); ++at) {
        for (const int change : {0x01, 0x10, 0x84, 0xFF}) {
            std::vector<uint8_t> bytes = whole->bytes();
            bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
            const Reading reading = read(NSData::dataWithBytes(std::move(bytes)), palette);
            ASSERT_LE(reading.peakBytes, 16 * whole->length() + kBytesOfEmptyReader) << at << " ^ " << change;
            if (!reading.error.empty()) ++refused;
            // What was read is whole: it can be asked, and written.
            const auto objects = std::dynamic_pointer_cast<NSArray>(reading.object);
            if (!objects) continue;
            EXPECT_FALSE(objects->description().empty());
            std::string error;
            ASSERT_TRUE(QzTokeningArchiver::archivedDataWithRootObject(objects, {palette}, &error)) << error;
        }
    }
    EXPECT_GT(refused, whole->length() / 4) << "most bytes are positions and letters; the others are structure";
    setStandardErrorHook({});
}

TEST(HostileArchive, ABitSetTakesNoMoreThanItHas) {
    for (const bool hasArrayType : {false, true}) {
        const Reading reading = read(codedAs("QzAnnoBits",
                                             [&](NSArchiver& archiver) {
                                                 archiver.encodeUnsignedInt(4000000000);
                                                 if (hasArrayType) archiver.encodeChars({});
                                             }),
                                     nullptr);
        EXPECT_FALSE(reading.object);
        EXPECT_NE(reading.error, "");
        EXPECT_LE(reading.peakBytes, kBytesOfEmptyReader);
    }
    // Bytes of no meaning and an empty row are kept as they are.
    for (const std::string_view bytes : {std::string_view("1x\0\xFF", 4), std::string_view()}) {
        const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(QzAnnoBits::initWithBytes(bytes));
        const auto bits = std::dynamic_pointer_cast<QzAnnoBits>(read(data, nullptr).object);
        ASSERT_TRUE(bits);
        EXPECT_EQ(bits->bytes(), bytes);
        EXPECT_EQ(bits->getValueAtIndex(7), false);
    }
}

TEST(HostileArchive, AStringThatRefersToOneBitSetTwiceEditsEachAnnotationOnItsOwn) {
    test::LogCapture log;
    const Ref<QzAnnoPalette> palette = samplePalette();
    ObjectMap annotations;
    const Ref<QzAnnoBits> shared = QzAnnoBits::initWithBytes("1100");
    for (const int32_t priority : {1, 2}) annotations.set(palette->annoKeyAtPriority(priority), shared);
    const Ref<QzMutableAnnoString> string = QzMutableAnnoString::initWithString("abcd"_ns);
    MutableSupport::setAnnotations(*string, NSDictionary::dictionaryWithMap(annotations), false);
    const auto read = std::dynamic_pointer_cast<QzMutableAnnoString>(
        test::readString(QzTokeningArchiver::archivedDataWithRootObject(string, {palette}), {palette}));
    ASSERT_TRUE(read);
    read->addAnno(palette->annoKeyAtPriority(1), {2, 2});
    EXPECT_FALSE(read->annotation(palette->annoKeyAtPriority(2), 3));
}

TEST(HostileArchive, AStringOfOtherThingsIsRefused) {
    const auto coded = [](const Ref<NSObject>& annotations, const Ref<NSObject>& text) {
        return codedAs("QzAnnoString", [=](NSArchiver& archiver) {
            archiver.encodeObject(annotations);
            archiver.encodeObject(nullptr);
            archiver.encodeObject(text);
        });
    };
    ObjectMap names;
    names.set("name"_ns, QzAnnoBits::init());
    const Ref<NSObject> none;
    for (const auto& [data, expected] :
         {std::pair(coded("text"_ns, "text"_ns), "where one of class NSDictionary is due"),
          {coded(NSDictionary::dictionary(), NSArray::array()), "where one of class NSString is due"},
          {coded(NSDictionary::dictionaryWithMap(names), "text"_ns), "annotation keys to bit sets"}}) {
        const Reading reading = read(data, nullptr);
        EXPECT_FALSE(reading.object);
        EXPECT_THAT(reading.error, HasSubstr(expected));
    }
    const auto empty = std::dynamic_pointer_cast<QzAnnoString>(read(coded(none, none), nullptr).object);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->length(), 0u);
}

}  // namespace
}  // namespace qz
