#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno_AnnotatedTextFramework/render/ExpandRectConstrainedBy.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

TEST(ExpandRectConstrainedBy, GrowsAndCutsToTheScreen) {
    constexpr NSSize screen = {720, 576};
    const struct {
        const char* reason;
        NSRect rect;
        NSRect result;
        NSPoint offset;
    } cases[] = {
        {"inside", {{100, 50}, {200, 40}}, {{90, 40}, {220, 60}}, {10, 10}},
        {"cut at the top left", {{3, 4}, {50, 20}}, {{0, 0}, {63, 34}}, {3, 4}},
        {"cut at the right", {{600, 50}, {120, 40}}, {{590, 40}, {130, 60}}, {10, 10}},
        {"cut at the bottom", {{100, 550}, {20, 26}}, {{90, 540}, {40, 36}}, {10, 10}},
        {"larger than the screen", {{-5, -5}, {800, 700}}, {{0, 0}, {720, 576}}, {-5, -5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        const test::LogCapture log;
        NSPoint offset;
        EXPECT_EQ(ExpandRectConstrainedBy(c.rect, 10, 10, 10, 10, screen, &offset), c.result);
        EXPECT_EQ(offset, c.offset);
    }
}

TEST(ExpandRectConstrainedBy, LogsWithAQuestionMarkForAMissingOffset) {
    const test::LogCapture log;
    ExpandRectConstrainedBy({{100, 50}, {200, 40}}, 1, 2, 3, 4, {720, 576});
    EXPECT_THAT(log.lines(),
                testing::ElementsAre("Rect {{100, 50}, {200, 40}} expanded to {{99, 47}, {203, 47}}, offset ?, "
                                     "screen {720, 576}\n"));
}

}  // namespace
}  // namespace qz
