#include <algorithm>
#include <functional>
#include <random>

#include <gmock/gmock.h>

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"

namespace qz {
namespace {

constexpr uint32_t kPositionMax = 0xFFFFFFFE;

Ref<QzAnnoBits> bitsWith(std::initializer_list<Range> setRanges) {
    Ref<QzAnnoBits> bits = QzAnnoBits::init();
    for (Range range : setRanges) bits->setRange(range);
    return bits;
}

TEST(QzAnnoBits, DescribesItsSetRuns) {
    EXPECT_EQ(QzAnnoBits::init()->description(), "none");
    EXPECT_EQ(bitsWith({{2, 3}, {7, 2}})->description(), "2-5, 7-9");
    EXPECT_EQ(QzAnnoBits::initWithBytes("0x11")->description(), "2-") << "a run at the row's end has no end number";
}

TEST(QzAnnoBits, CopiesAndSubsetsGrowTheSource) {
    const Ref<QzAnnoBits> bits = bitsWith({{3, 2}}), copy = bits->copy();
    EXPECT_EQ(copy->size(), 1024u);
    EXPECT_EQ(bits->size(), 1025u);
    EXPECT_EQ(bits->annoSubbitsFromRange({1000, 2000})->size(), 2000u);
    EXPECT_EQ(bits->size(), 3001u);
    copy->clearRange({0, 10});
    EXPECT_EQ(bits->description(), "3-5");
}

TEST(QzAnnoBits, RangesThatCannotBeHeldChangeNothing) {
    const Range unholdable[] = {{kPositionMax, 1}, {1, kPositionMax}, {5, 0xFFFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}};
    for (Range range : unholdable) {
        SCOPED_TRACE(testing::Message() << range.location << " + " << range.length);
        const Ref<QzAnnoBits> bits = bitsWith({{2, 3}});
        const Ref<QzAnnoBits> other = bitsWith({{0, 9}});
        bits->setRange(range);
        bits->clearRange(range);
        bits->toggleRange(range);
        bits->insertRange(range);
        bits->removeRange(range);
        bits->copyBits(*other, range);
        EXPECT_FALSE(bits->annoSubbitsFromRange(range));
        EXPECT_FALSE(bits->equalToAnnoBits(*other, range));
        EXPECT_EQ(bits->description(), "2-5");
        EXPECT_EQ(bits->size(), 1024u);
        EXPECT_EQ(other->size(), 1024u);
    }
    const Ref<QzAnnoBits> bits = bitsWith({{2, 3}});
    bits->insertRange({0, kPositionMax - 1000});  // the range can be held, but not the positions it shifts
    bits->copyBits(*bits, {kPositionMax, 0});     // the other set would need one position more
    Range run{7, 7};
    EXPECT_FALSE(bits->getValueAtIndex(kPositionMax, &run));
    EXPECT_EQ(run, (Range{7, 7}));
    EXPECT_TRUE(bits->equalToAnnoBits(*bits, {kPositionMax, 0}));
    EXPECT_EQ(bits->size(), 1024u);
}

}  // namespace
}  // namespace qz
