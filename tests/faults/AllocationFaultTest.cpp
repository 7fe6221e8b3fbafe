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
#include "platform/text/NSAttributedString.h"
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

/// Makes the edit of a string of its own, failing allocation after allocation: a string is what it was, or what the
/// edit makes of it, and never between.
template <class String>
uint64_t failEachAllocationOfEdit(const std::function<Ref<String>()>& make, const std::function<void(String&)>& edit,
                                  const char* name) {
    const Ref<String> before = make(), after = make();
    edit(*after);
    uint64_t failed = 0;
    for (uint64_t number = 1;; ++number) {
        const Ref<String> edited = make();
        try {
            const test::FailingAllocation failing(number);
            edit(*edited);
            if (failing.count() >= number)
                ADD_FAILURE() << name << ": the failure of allocation " << number << " is lost";
            EXPECT_TRUE(edited->isEqual(*after)) << name;
            return failed;
        } catch (const std::bad_alloc&) {
            ++failed;
        }
        EXPECT_TRUE(edited->isEqual(*before)) << name << " is half done after the failure of allocation " << number;
        edit(*edited);
        EXPECT_TRUE(edited->isEqual(*after)) << name << ", tried again after the failure of allocation " << number;
    }
}

TEST(AllocationFault, LeavesAnAnnotatedStringAsItWas) {
    const Ref<QzAnnoPalette> styles = palette();
    const Ref<QzAnnoKey> red = styles->annoKeyAtPriority(1), other = QzAnnoKey::keyWithName("other"_ns);
    const std::function<Ref<QzMutableAnnoString>()> make = [&] { return title(*styles); };
    // Longer than a row is at first, and with a key that the title lacks.
    const auto added = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::u16string(3000, u'x')));
    added->addAnno(other, {1, 2998});
    const Ref<NSSet> both = NSSet::setWithObjects(std::vector<Ref<QzAnnoKey>>{red, other});
    const std::pair<const char*, std::function<void(QzMutableAnnoString&)>> edits[] = {
        {"a plain replacement",
         [&](auto& text) {
             text.replaceCharactersInRange({2, 3}, added->string());
         }},
        {"an annotated replacement",
         [&](auto& text) {
             text.replaceCharactersInRange({1, 4}, *added);
         }},
        {"an insertion", [&](auto& text) { text.insertAnnoString(*added, 3); }},
        {"an insertion of itself", [&](auto& text) { text.insertAnnoString(text, 3); }},
        {"an appended string", [&](auto& text) { text.appendAnnoString(*added); }},
        {"a deletion",
         [&](auto& text) {
             text.deleteCharactersInRange({1, 4});
         }},
        {"a new string", [&](auto& text) { text.setAnnoString(*added); }},
        {"a set key",
         [&](auto& text) {
             text.addAnno(other, {0, 5});
         }},
        {"two set keys",
         [&](auto& text) {
             text.setAnnos(both, {0, 12});
         }},
        {"a toggled frame", [&](auto& text) { text.toggleFrameAnno(red); }},
    };
    uint64_t failed = 0;
    for (const auto& [name, edit] : edits) failed += failEachAllocationOfEdit(make, edit, name);
    RecordProperty("allocationsFailed", std::to_string(failed));
    EXPECT_GT(failed, 50u);
}

/// The names in their order, each with its number of attributes, and what could be undone.
std::string stackOf(const QzAnnoPalette& palette) {
    std::string text;
    for (int32_t priority = 0; priority <= palette.maxPriority(); ++priority) {
        const Ref<QzAnnoKey> key = palette.annoKeyAtPriority(priority);
        text += key->name()->utf8() + std::to_string(palette.lookupAnno(key)->allAttributes()->count());
        if (palette.lookupPrio(key) != priority || !key->valid()) text += " astray";
        text += ",";
    }
    return text;
}

/// Edits a palette without memory, and undoes all of it: the stack is whole at any moment, and edits and undoing go on.
TEST(AllocationFault, LeavesAPaletteAndItsUndoManagerWhole) {
    const std::function<void(QzAnnoPalette&)> edits[] = {
        [](auto& palette) { palette.createAnno("d"_ns); },
        [](auto& palette) { palette.removeAnno(palette.annoKeyAtPriority(2)); },
        [](auto& palette) { palette.setAnnoKey(palette.annoKeyAtPriority(1), 3); },
        [](auto& palette) { palette.increasePriorityOfAnnoKey(palette.annoKeyAtPriority(1)); },
        [](auto& palette) {
            const Ref<QzMutableAnno> changed = palette.lookupAnno(palette.annoKeyAtPriority(1))->mutableCopy();
            changed->setAttribute("size"_ns, "large"_ns);
            palette.replaceAnno(changed);
        },
        [](auto& palette) { palette.undoManager()->undo(); },
    };
    setStandardErrorHook([](std::string_view) {});
    uint64_t failed = 0;
    for (const auto& edit : edits) {
        const auto make = [&] {
            const Ref<QzAnnoPalette> palette = test::paletteWithGlobals({});
            // Twenty, so that the table has an index.
            for (int i = 0; i < 20; ++i)
                palette->createAnno(NSString::stringWithUTF8String(std::string(1, char('a' + i))));
            palette->undoManager()->endEvent();
            palette->removeAnno(palette->annoKeyAtPriority(7));
            palette->undoManager()->endEvent();
            return palette;
        };
        const Ref<QzAnnoPalette> before = make(), after = make();
        edit(*after);
        for (uint64_t number = 1; number < 1000; ++number) {
            const Ref<QzAnnoPalette> palette = make();
            try {
                const test::FailingAllocation failing(number);
                edit(*palette);
                if (failing.count() < number) break;
            } catch (const std::bad_alloc&) {
                ++failed;
            }
            const std::string stack = stackOf(*palette);
            EXPECT_TRUE(stack == stackOf(*before) || stack == stackOf(*after))
                << stack << " after allocation " << number;
            palette->undoManager()->endEvent();
            for (int undone = 0; undone < 5 && palette->undoManager()->undo(); ++undone) continue;
            EXPECT_EQ(stackOf(*palette), "GLOBALS0,") << "undone after the failure of allocation " << number;
        }
    }
    setStandardErrorHook({});
    RecordProperty("allocationsFailed", std::to_string(failed));
    EXPECT_GT(failed, 20u);
}

TEST(AllocationFault, LeavesAnAttributedStringAsItWas) {
    const Ref<NSDictionary> red = test::dictionaryOf({{"colour"_ns, "red"_ns}});
    const Ref<NSDictionary> large = test::dictionaryOf({{"size"_ns, test::number(90)}});
    // Its lists of characters and of runs are full, so that whatever is added takes memory.
    const std::function<Ref<NSMutableAttributedString>()> make = [&] {
        const auto text = NSMutableAttributedString::init();
        for (int run = 0; run < 8; ++run) text->appendString(u"four", run % 2 ? red : large);
        return text;
    };
    const std::u16string added(100, u'x');
    const Ref<NSAttributedString> runs = make()->copy();
    const std::pair<const char*, std::function<void(NSMutableAttributedString&)>> edits[] = {
        {"appended characters", [&](auto& text) { text.appendString(added, large); }},
        {"characters appended to the last run", [&](auto& text) { text.appendString(added, red); }},
        {"an appended string", [&](auto& text) { text.appendAttributedString(*runs); }},
        {"a replacement",
         [&](auto& text) {
             text.replaceCharactersInRange({5, 9}, *runs);
         }},
        {"a replacement by itself",
         [&](auto& text) {
             text.replaceCharactersInRange({5, 9}, text);
         }},
        {"a plain replacement",
         [&](auto& text) {
             text.replaceCharactersInRange({1, 2}, "some more text"_ns);
         }},
        {"a deletion",
         [&](auto& text) {
             text.deleteCharactersInRange({2, 20});
         }},
        {"new attributes",
         [&](auto& text) {
             text.setAttributes(red, {1, 2});
         }},
        {"one attribute",
         [&](auto& text) {
             text.addAttribute("font"_ns, "f"_ns, {2, 25});
         }},
        {"one attribute less",
         [&](auto& text) {
             text.removeAttribute(*"size"_ns, {1, 14});
         }},
    };
    uint64_t failed = 0;
    for (const auto& [name, edit] : edits) failed += failEachAllocationOfEdit(make, edit, name);
    RecordProperty("allocationsFailed", std::to_string(failed));
    EXPECT_GT(failed, 50u);
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
