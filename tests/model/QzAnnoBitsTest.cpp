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

/// The rules of a bit set, one byte at a time.
struct SlowBits {
    std::string row;

    void cover(uint64_t n) {
        while (row.size() <= n) row += row.empty() ? '0' : row.back();
    }
    bool value(uint32_t i) {
        cover(i + 1);
        return row[i] == '1';
    }
    Range runAt(uint32_t i) {
        const bool set = value(i);
        uint32_t start = i, end = i + 1;
        while (start > 0 && (row[start - 1] == '1') == set) --start;
        while (end < row.size() && (row[end] == '1') == set) ++end;
        return {start, end - start};
    }
    void write(Range r, char byte) {
        cover(r.end());
        for (uint64_t i = r.location; i < r.end(); ++i) row[i] = byte;
    }
    void toggle(Range r) {
        cover(r.end());
        for (uint32_t i = r.location; i < r.end(); ++i) row[i] = value(i) ? '0' : '1';
    }
    void remove(Range r) {
        cover(r.end());
        const std::string old = row;
        for (uint64_t i = r.end(); i < old.size(); ++i) row[i - r.length] = old[i];
    }
    void insert(Range r) {
        const size_t s = row.size();
        cover(s + r.length);
        const std::string old = row;
        for (size_t i = r.location; i <= s; ++i) row[i + r.length] = old[i];
        write(r, r.location > 0 && value(r.location - 1) ? '1' : '0');
    }
    void copyFrom(SlowBits& other, Range r) {
        cover(r.end());
        other.value(static_cast<uint32_t>(r.end()));
        const std::string source = other.row;
        for (uint32_t i = 0; i < r.length; ++i) row[r.location + i] = source[i];
    }
};

/// Two rows and their models under the same edits and queries.
class RandomEdits {
public:
    explicit RandomEdits(uint32_t seed) : random_(seed) {
        for (int i = 0; i < 2; ++i) {
            std::string start(upTo(3) == 0 ? upTo(20) : 1024, '0');
            if (upTo(2) == 0) std::ranges::generate(start, [&] { return "01x"[upTo(3)]; });
            fast_[i] = QzAnnoBits::initWithBytes(start);
            slow_[i].row = start;
        }
    }

    void step() {
        const uint32_t which = upTo(2);
        QzAnnoBits& fast = *fast_[which];
        SlowBits& slow = slow_[which];
        // Ranges begin at either end of a run as often as anywhere, for there the scans go wrong.
        const uint32_t size = static_cast<uint32_t>(slow.row.size());
        uint32_t location = upTo(upTo(4) == 0 ? 40 : std::min(size + 10, 3000u));
        fast.getValueAtIndex(location), slow.value(location);
        if (upTo(2) == 0) location = slow.runAt(location).location;
        const Range range{location, upTo(upTo(5) == 0 ? 300 : 12)};
        const std::function<void()> operations[] = {
            [&] { fast.setRange(range), slow.write(range, '1'); },
            [&] { fast.clearRange(range), slow.write(range, '0'); },
            [&] { fast.toggleRange(range), slow.toggle(range); },
            [&] { fast.insertRange(range), slow.insert(range); },
            [&] { fast.removeRange(range), slow.remove(range); },
            [&] { fast.copyBits(*fast_[0], range), slow.copyFrom(slow_[0], range); },
            [&] { compare(fast, slow, range); },
            [&] { walk(fast, slow); },
        };
        operations[upTo(std::size(operations))]();
        Range run;
        const uint32_t index = upTo(static_cast<uint32_t>(slow.row.size()) + 3);
        ASSERT_EQ(fast.getValueAtIndex(index, &run), slow.value(index));
        ASSERT_EQ(run, slow.runAt(index));
        ASSERT_EQ(fast.bytes(), slow.row);
    }

private:
    uint32_t upTo(uint32_t bound) { return bound == 0 ? 0 : static_cast<uint32_t>(random_() % bound); }

    void compare(QzAnnoBits& fast, SlowBits& slow, Range range) {
        const bool equal = fast.equalToAnnoBits(*fast_[0], range);
        slow.cover(range.end());
        slow_[0].value(static_cast<uint32_t>(range.end()));
        ASSERT_EQ(equal,
                  slow.row.substr(range.location, range.length) == slow_[0].row.substr(range.location, range.length));
        slow.cover(range.end());
        ASSERT_EQ(fast.annoSubbitsFromRange(range)->bytes(), slow.row.substr(range.location, range.length));
    }

    // Growth in the middle of a walk must not leave a run behind that is too short.
    void walk(QzAnnoBits& fast, SlowBits& slow) {
        Range run;
        for (uint32_t i = 0; i + 1 < slow.row.size(); i = run.location + run.length) {
            ASSERT_EQ(fast.getValueAtIndex(i, &run), slow.value(i));
            ASSERT_EQ(run, slow.runAt(i));
            if (upTo(20) == 0)
                fast.getValueAtIndex(fast.size() + 2), slow.value(static_cast<uint32_t>(slow.row.size()) + 2);
            if (slow.row.size() > 3000) break;
        }
    }

    std::mt19937 random_;
    Ref<QzAnnoBits> fast_[2];
    SlowBits slow_[2];
};

TEST(QzAnnoBits, BehavesAsTheSlowModelUnderRandomEdits) {
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        RandomEdits edits(seed);
        for (int step = 0; step < 200; ++step) {
            edits.step();
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace qz
