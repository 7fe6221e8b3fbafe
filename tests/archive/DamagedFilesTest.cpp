#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "fuzz/TypedStreamCheck.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/archive/Archives.h"
#include "tests/support/AllocationCount.h"
#include "tests/support/CodedAs.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

using test::codedAs;
using testing::HasSubstr;

// Memory for the tables of a new reader, a discarded palette, and one line of error.
constexpr size_t kBytesOfEmptyReader = 12 * 1024;

size_t bytesForObjects(size_t length) {
    return 16 * length + kBytesOfEmptyReader;
}

// A palette and titles using it: every class of the library with a coded form.
Ref<NSData> archiveOf(const Ref<QzAnnoPalette>& palette) {
    std::vector<Ref<NSObject>> objects = {palette};
    for (uint32_t i = 0; i < 5; ++i) {
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

// Every class of the platform's values.
Ref<NSData> archiveOfValues() {
    const Ref<NSString> size = "QzFontSizeAttribute"_ns;
    const Ref<NSString> bits = NSString::stringWithUTF8String("a title of usual length, 中文 and 😀");
    std::vector<Ref<NSObject>> annotations;
    for (int i = 0; i < 20; ++i) {
        ObjectMap map;
        map.set(size, NSNumber::numberWithFloat(static_cast<float>(i) + 0.5f));
        map.set("Name"_ns, NSString::stringWithUTF8String("Annotation " + std::to_string(i)));
        if (i % 5 == 0) map.set(bits, NSData::dataWithBytes(std::string(static_cast<size_t>(i), 'x')));
        if (i % 7 == 0) map.set("Date"_ns, NSDate::dateWithTimeIntervalSinceReferenceDate(i * 1e9 + 0.25));
        annotations.push_back(NSDictionary::dictionaryWithMap(map));
        if (i % 3 == 0) annotations.push_back(NSSet::setWithObject(annotations.back()));
        annotations.push_back(NSURL::URLWithString("a"_ns, NSURL::URLWithString(bits)));
    }
    return NSArchiver::archivedDataWithRootObject(NSArray::arrayWithObjects(annotations));
}

/// How to read files of one format, and what is guaranteed for damaged ones.
struct DamagedFormat {
    const char* name;
    Ref<NSData> whole;
    /// Reads the file, then inspects, writes and discards the result. Returns whether there was one.
    std::function<bool(const Ref<NSData>& file, std::string* error)> read;
    /// Occurs in every error about a truncated file.
    const char* place;
    /// A file of at least this length is complete.
    size_t lengthNeeded;
    /// The memory limit for a file of a given length.
    std::function<size_t(size_t length)> bytesMax;
    /// The share of changed files that must be refused, to prove that the sweep is effective.
    double refusedShare;
};

/// Truncates the file after each byte, and changes each byte in several ways: a truncated file must be refused with a
/// line that says where, a changed one read or refused with a line, and both must use little memory.
void sweepDamage(const DamagedFormat& format) {
    SCOPED_TRACE(format.name);
    const auto reads = [&format](std::vector<uint8_t> bytes, std::string* error) {
        const size_t length = bytes.size();
        const Ref<NSData> file = NSData::dataWithBytes(std::move(bytes));
        const test::AllocationPeak peak;
        const bool isRead = format.read(file, error);
        EXPECT_LE(peak.bytes(), format.bytesMax(length));
        EXPECT_EQ(isRead, error->empty());
        EXPECT_EQ(error->find('\n'), std::string::npos) << *error;
        return isRead;
    };
    const std::vector<uint8_t>& whole = format.whole->bytes();
    std::string error;
    ASSERT_TRUE(reads(whole, &error)) << error;
    for (size_t length = 0; length < format.lengthNeeded; ++length) {
        error.clear();
        ASSERT_FALSE(reads({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)}, &error)) << length;
        ASSERT_THAT(error, testing::HasSubstr(format.place)) << length;
        ASSERT_FALSE(testing::Test::HasFailure()) << "cut after " << length << " bytes";
    }
    size_t refused = 0, changed = 0;
    for (size_t at = 0; at < whole.size(); ++at) {
        for (const int change : {0x01, 0x84, 0xFF}) {
            std::vector<uint8_t> bytes = whole;
            bytes[at] = static_cast<uint8_t>(bytes[at] ^ change);
            error.clear();
            refused += !reads(std::move(bytes), &error);
            ++changed;
            ASSERT_FALSE(testing::Test::HasFailure()) << "byte " << at << " ^ " << change;
        }
    }
    EXPECT_GT(static_cast<double>(refused) / static_cast<double>(changed), format.refusedShare);
}

TEST(DamagedFiles, AreRefusedOrReadInLittleMemory) {
    setStandardErrorHook([](std::string_view) {});
    const Ref<QzAnnoPalette> palette = samplePalette();
    const Ref<NSData> archive = archiveOf(palette), values = archiveOfValues(), list = palette->pListData();
    const Ref<NSData> picture =
        pngFromBitmap(*NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 40, .pixelsHigh = 30}));
    const DamagedFormat formats[] = {
        {"a palette and titles", archive,
         [&](const Ref<NSData>& file, std::string* error) {
             const auto read = QzTokeningUnarchiver::unarchiveObjectWithData(file, {palette}, error);
             // Whatever was read is valid: it can be queried and written.
             if (read) {
                 EXPECT_FALSE(read->description().empty());
                 EXPECT_TRUE(QzTokeningArchiver::archivedDataWithRootObject(read, {palette}));
             }
             return read || error->empty();  // other versions return null without an error
         },
         "byte ", archive->length(), bytesForObjects, 0.06},
        {"values", values,
         [](const Ref<NSData>& file, std::string* error) {
             bool isRead = false;
             {
                 const test::AllocationPeak peak;
                 isRead = NSUnarchiver::unarchiveObjectWithData(file, error) || error->empty();
                 EXPECT_LE(peak.bytes(), bytesForObjects(file->length()));
             }
             // Writes and rereads the result, which takes more memory.
             EXPECT_EQ(test::checkTypedStream(file->view()), "");
             return isRead;
         },
         "byte ", values->length(), [](size_t length) { return 64 * length + 4 * kBytesOfEmptyReader; }, 0.25},
        {"a property list", list,
         [](const Ref<NSData>& file, std::string* error) {
             return NSPropertyListSerialization::propertyListFromData(*file, error) != nullptr;
         },
         "", list->view().rfind('>') + 1, [](size_t length) { return 200 * length + 100'000; }, 0.5},
        {"a picture", picture,
         [](const Ref<NSData>& file, std::string* error) { return bitmapFromPNG(*file, error) != nullptr; }, "PNG file",
         picture->length(), [](size_t length) { return length + 64 * 1024; }, 0.9},
    };
    for (const DamagedFormat& format : formats) {
        sweepDamage(format);
        if (HasFailure()) break;
    }
    setStandardErrorHook({});
}

struct Reading {
    Ref<NSObject> object;
    std::string error;
    size_t peakBytes = 0;
};

Reading read(const Ref<NSData>& data) {
    Reading reading;
    const test::AllocationPeak peak;
    // A null table is ignored.
    reading.object = QzTokeningUnarchiver::unarchiveObjectWithData(data, {Ref<QzTokenTable>()}, &reading.error);
    reading.peakBytes = peak.bytes();
    return reading;
}

TEST(DamagedFiles, ABitSetTakesNoMoreThanItHas) {
    for (const bool hasArrayType : {false, true}) {
        const Reading reading = read(codedAs("QzAnnoBits", [&](NSArchiver& archiver) {
            archiver.encodeUnsignedInt(4000000000);
            if (hasArrayType) archiver.encodeChars({});
        }));
        EXPECT_FALSE(reading.object);
        EXPECT_NE(reading.error, "");
        EXPECT_LE(reading.peakBytes, kBytesOfEmptyReader);
    }
    // Meaningless bytes and an empty row are kept.
    for (const std::string_view bytes : {std::string_view("1x\0\xFF", 4), std::string_view()}) {
        const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(QzAnnoBits::initWithBytes(bytes));
        const auto bits = std::dynamic_pointer_cast<QzAnnoBits>(read(data).object);
        ASSERT_TRUE(bits);
        EXPECT_EQ(bits->bytes(), bytes);
        EXPECT_EQ(bits->getValueAtIndex(7), false);
    }
}

TEST(DamagedFiles, AStringThatRefersToOneBitSetTwiceEditsEachAnnotationOnItsOwn) {
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

TEST(DamagedFiles, AStringOfOtherThingsIsRefused) {
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
         {std::pair(coded("text"_ns, "text"_ns), "where one of class NSDictionary is expected"),
          {coded(NSDictionary::dictionary(), NSArray::array()), "where one of class NSString is expected"},
          {coded(NSDictionary::dictionaryWithMap(names), "text"_ns), "annotation keys to bit sets"}}) {
        const Reading reading = read(data);
        EXPECT_FALSE(reading.object);
        EXPECT_THAT(reading.error, HasSubstr(expected));
    }
    const auto empty = std::dynamic_pointer_cast<QzAnnoString>(read(coded(none, none)).object);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->length(), 0u);
}

}  // namespace
}  // namespace qz
