#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "QzAnno/platform/foundation/NSData.h"
#include "tests/support/AllocationCount.h"

namespace qz::test {

/// How files of one format are read, and what is promised of damaged ones.
struct DamagedFormat {
    const char* name;
    Ref<NSData> whole;
    /// Whether there is something to read; what was read is looked at, and written, before it is given up.
    std::function<bool(const Ref<NSData>& file, std::string* error)> read;
    /// In every error of a file that is cut short.
    const char* place;
    /// From here on nothing is missing.
    size_t lengthNeeded;
    /// The most memory for a file of some length.
    std::function<size_t(size_t length)> bytesMax;
    /// What part of the changed files must be refused for the sweep to be worth its name.
    double refusedShare;
};

/// Cuts the file after each of its bytes, and changes each byte in several ways: a cut file is refused with a line that
/// says where, a changed one is read or refused with a line, and either takes little memory.
inline void sweepDamage(const DamagedFormat& format) {
    SCOPED_TRACE(format.name);
    const auto reads = [&format](std::vector<uint8_t> bytes, std::string* error) {
        const size_t length = bytes.size();
        const Ref<NSData> file = NSData::dataWithBytes(std::move(bytes));
        const AllocationPeak peak;
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

}  // namespace qz::test
