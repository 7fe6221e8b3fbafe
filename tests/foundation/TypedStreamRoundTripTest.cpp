#include <bit>
#include <cmath>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSNull.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

class RandomGraph {
public:
    explicit RandomGraph(uint32_t seed) : random_(seed) {}

    /// An array of all that was made, with one object in several places.
    Ref<NSObject> make(int size) {
        for (int i = 0; i < size; ++i) pool_.push_back(makeObject());
        return NSArray::arrayWithObjects(pool_);
    }

private:
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    double real() {
        const auto real = std::bit_cast<double>(bits());
        return std::isnan(real) ? 0.5 : real;  // not equal to itself
    }
    uint64_t bits() { return uint64_t{static_cast<uint32_t>(random_())} << 32 | static_cast<uint32_t>(random_()); }
    Ref<NSObject> known() { return pool_[below(static_cast<uint32_t>(pool_.size()))]; }

    Ref<NSString> string() {
        std::u16string text;
        for (uint32_t i = below(200) < 5 ? 300 : below(12); i > 0; --i) {
            text += static_cast<char16_t>(below(3) == 0 ? below(0xD800) : 'a' + below(26));
        }
        return NSString::stringWithCharacters(text);
    }

    Ref<NSNumber> number() {
        // Of every magnitude, so that each length of the coded form is met.
        const auto integer = static_cast<int64_t>(bits()) >> below(64);
        switch (below(5)) {
            case 0:
                return NSNumber::numberWithBool(integer & 1);
            case 1:
                return NSNumber::numberWithInt(static_cast<int32_t>(integer));
            case 2:
                return NSNumber::numberWithLongLong(integer);
            case 3:
                return NSNumber::numberWithFloat(static_cast<float>(real()));
            default:
                return NSNumber::numberWithDouble(below(2) ? real() : static_cast<double>(integer));
        }
    }

    Ref<NSObject> makeObject() {
        const bool hasParts = !pool_.empty();
        switch (below(hasParts ? 9 : 5)) {
            case 0:
                return string();
            case 1:
                return number();
            case 2:
                return NSData::dataWithBytes(std::string(below(4) ? below(5) : 200, static_cast<char>(below(256))));
            case 3:
                return NSDate::dateWithTimeIntervalSinceReferenceDate(real());
            case 4:
                return NSNull::null();
            case 5:
                return NSURL::URLWithString(string(), std::dynamic_pointer_cast<NSURL>(known()));
            case 6:
                return NSArray::arrayWithObjects(parts());
            case 7: {
                const auto members = parts();
                return NSSet::setWithObjects(members);
            }
            default: {
                ObjectMap map;
                for (const Ref<NSObject>& value : parts()) map.set(below(2) ? known() : string(), value);
                return NSDictionary::dictionaryWithMap(map);
            }
        }
    }

    std::vector<Ref<NSObject>> parts() {
        std::vector<Ref<NSObject>> parts;
        for (uint32_t i = below(4); i > 0; --i) parts.push_back(known());
        return parts;
    }

    std::mt19937 random_;
    std::vector<Ref<NSObject>> pool_;
};

TEST(TypedStreamRoundTrip, GraphsKeepValuesShapeAndSharing) {
    const uint32_t seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    for (uint32_t round = 0; round < 300; ++round) {
        // Numbers of objects beyond 237 are written with 16 bits.
        const Ref<NSObject> graph =
            RandomGraph(seed + round).make(round % 50 == 0 ? 500 : static_cast<int>(1 + round % 80));
        std::string error;
        const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(graph, &error);
        ASSERT_TRUE(data) << round << ": " << error;
        const Ref<NSObject> read = NSUnarchiver::unarchiveObjectWithData(data, &error);
        ASSERT_TRUE(read) << round << ": " << error;
        ASSERT_TRUE(read->isEqual(*graph)) << round;
        // The same bytes come of the same kinds, with the same objects in several places.
        ASSERT_TRUE(NSArchiver::archivedDataWithRootObject(read)->isEqual(*data)) << round;
    }
}

}  // namespace
}  // namespace qz
