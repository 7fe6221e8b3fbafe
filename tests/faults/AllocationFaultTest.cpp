// Memory that runs out at any moment of a piece of work: `std::bad_alloc` leaves the call and nothing else happens. The
// same work done afterwards gives what it always gives, and holds no block more.
#include <functional>
#include <new>

#include <gtest/gtest.h>

#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzBBoxInfo.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "platform/foundation/NSLog.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/graphics/PNG.h"
#include "tests/faults/FailingAllocation.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

/// Work that gives bytes to compare.
using Work = std::function<std::string()>;

/// Fails allocation after allocation of the work: every one where `tries` are enough, else one of a few.
void failEachAllocation(const Work& work, uint64_t tries = 2000) {
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    // What is made once for the process, and what caches keep, is there after some rounds.
    std::string expected;
    for (int round = 0; round < 3; ++round) expected = work();
    const test::FailingAllocation none(0);
    work();
    const uint64_t allocations = none.count();
    ASSERT_GT(allocations, 50u);
    const uint64_t stride = allocations / tries + 1;
    const int64_t held = test::blocksHeld();
    uint64_t refused = 0;
    for (uint64_t number = 1; number <= allocations; number += number < 20 ? 1 : stride) {
        try {
            const test::FailingAllocation failing(number);
            work();
        } catch (const std::bad_alloc&) {
            ++refused;
        }
        ASSERT_FALSE(NSGraphicsContext::currentContext()) << "left current by the failure of allocation " << number;
        ASSERT_TRUE(work() == expected) << "other work after the failure of allocation " << number;
        ASSERT_EQ(test::blocksHeld(), held) << "after the failure of allocation " << number << " of " << allocations;
    }
    EXPECT_GT(refused, 20u);
}

Ref<QzAnnoPalette> palette() {
    const Ref<QzAnnoPalette> palette = test::paletteWithGlobals(
        {{QzFontSizeAttribute, test::number(20)},
         {QzBackgroundColorAttribute, test::rgba(0, 0, 0)},
         {QzBackgroundWidthAttribute, test::number(3)},
         {QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(test::rgba(0, 0, 1), 1)}});
    test::addAnnotation(*palette, "Red", {{QzTextColorAttribute, test::rgba(1, 0, 0, 0.5f)}});
    return palette;
}

Ref<QzMutableAnnoString> title(const QzAnnoPalette& palette) {
    const auto title = QzMutableAnnoString::initWithString("Small \xD7\xA9\xD7\x9C ffi\ntitle"_ns);
    title->addAnno(palette.annoKeyAtPriority(1), {2, 5});
    return title;
}

TEST(AllocationFault, EndsARenderAndNothingElse) {
    failEachAllocation([] {
        const Ref<QzAnnoPalette> styles = palette();
        const auto screen = QzAnnoStringToScreen::init();
        screen->setPalette(styles);
        screen->setScreenSize({96, 64}, {96, 64});
        screen->setAnnoString(title(*styles));
        const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
        return std::string(pngFromBitmap(*drawn)->view());
    });
}

/// The host's pipeline outlives the failure: it draws the next title as if nothing had been.
TEST(AllocationFault, LeavesAPipelineUsable) {
    const Ref<QzAnnoPalette> styles = palette();
    const auto screen = QzAnnoStringToScreen::init();
    screen->setPalette(styles);
    screen->setScreenSize({96, 64}, {96, 64});
    const Ref<QzAnnoString> string = title(*styles);
    failEachAllocation([&] {
        screen->layoutManager()->glyphCache()->removeAll();
        screen->setAnnoString(string);
        const auto frame = NSBitmapImageRep::initWithBitmapDataPlanes(nullptr, {.pixelsWide = 96, .pixelsHigh = 64});
        screen->drawInFullScreen(true, frame);
        return std::string(reinterpret_cast<const char*>(frame->row(0)), size_t{96} * 64 * 4);
    });
}

TEST(AllocationFault, LeavesNoHalfWrittenFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("titles.annostring");
    const Ref<QzAnnoPalette> styles = palette();
    // Few, since each waits for the disk.
    constexpr uint64_t kTries = 50;
    const Work save = [&] {
        try {
            const Ref<QzMutableAnnoString> string = title(*styles);
            string->appendAnnoString(*title(*styles));
            const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(string, {styles});
            writeFileAtomically(path, data->bytes(), nullptr);
            const Ref<NSObject> read = QzTokeningUnarchiver::unarchiveObjectWithData(data, {styles});
            return std::string(data->view()) + read->description();
        } catch (const std::bad_alloc&) {
            const auto files = std::distance(std::filesystem::directory_iterator(folder.path()), {});
            if (files > 1) ADD_FAILURE() << "a half-written file is left";
            throw;
        }
    };
    failEachAllocation(save, kTries);
}

}  // namespace
}  // namespace qz
