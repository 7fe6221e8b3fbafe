// Memory that runs out at any moment of a piece of work: `std::bad_alloc` leaves the call and nothing else happens. The
// same work done afterwards gives what it always gives, and holds no block more. A save leaves the old file or the new
// one, whole.
#include <atomic>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "platform/graphics/NSGraphicsContext.h"
#include "platform/text/GlyphCache.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace {

constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();

std::atomic<int64_t> blocksHeld = 0;
std::atomic<uint64_t> allocations = 0, failingAllocation = kNever;

void* take(size_t size) noexcept {
    if (++allocations == failingAllocation) return nullptr;
    void* const memory = std::malloc(size ? size : 1);
    if (memory) ++blocksHeld;
    return memory;
}

void* takeOrThrow(size_t size) {
    void* const memory = take(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void give(void* memory) noexcept {
    if (memory) --blocksHeld;
    std::free(memory);
}

}  // namespace

void* operator new(size_t size) {
    return takeOrThrow(size);
}
void* operator new[](size_t size) {
    return takeOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return take(size);
}
void operator delete(void* memory) noexcept {
    give(memory);
}
void operator delete[](void* memory) noexcept {
    give(memory);
}
void operator delete(void* memory, size_t) noexcept {
    give(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    give(memory);
}

namespace qz {
namespace {

/// Counts calls of `operator new` from its making, and fails the one of this number, from 1; 0 fails none.
class FailingMemory {
public:
    explicit FailingMemory(uint64_t number) {
        allocations = 0;
        failingAllocation = number == 0 ? kNever : number;
    }
    ~FailingMemory() { failingAllocation = kNever; }
    static uint64_t count() { return allocations; }
};

/// A render with fonts opened anew, by the host's pipeline, which outlives the failure; and a save of it.
TEST(MemoryFault, EndsARenderAndASaveOrChangesNothing) {
    constexpr uint64_t kTries = 300;
    setLogHook([](std::string_view) {});
    setStandardErrorHook([](std::string_view) {});
    const TemporaryFolder fonts, folder;
    ASSERT_TRUE(writeText(fonts.file("quokka.ttf"), test::quokka(test::fontFile("DejaVuSans"))));
    const std::string archive = folder.file("titles.annostring"), picture = folder.file("title.png");
    const auto screen = QzAnnoStringToScreen::init();
    const std::shared_ptr<FontLibrary> library = FontLibrary::withDirectories({fonts.path().string()});
    const auto run = [&] {
        const Ref<QzAnnoPalette> styles = test::strokedPalette(40, 8);
        test::giveAttributes(*styles, styles->lookupAnno({}), {{QzFontAttribute, "Quokka Sans"_ns}});
        const Ref<QzMutableAnnoString> title = test::mixedTitle(*styles);
        screen->layoutManager()->glyphCache()->removeAll();
        styles->setFontLibrary(library);
        screen->setPalette(styles);
        screen->setScreenSize({640, 360}, {640, 360});
        screen->setAnnoString(title);
        const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(true);
        if (!drawn) throw std::bad_alloc();
        const Ref<NSData> data = QzTokeningArchiver::archivedDataWithRootObject(title, {styles});
        const Ref<NSData> png = pngFromBitmap(*drawn);
        if (!writeFileAtomically(archive, data->bytes(), nullptr) ||
            !writeFileAtomically(picture, png->bytes(), nullptr))
            throw std::bad_alloc();
        return std::string(data->view()) + std::string(png->view());
    };
    std::string expected;
    for (int round = 0; round < 3; ++round) expected = run();
    const std::string newArchive = readText(archive), newPicture = readText(picture);
    uint64_t needed = 0, refused = 0;
    {
        const FailingMemory none(0);
        run();
        needed = none.count();
    }
    for (uint64_t number = 1; number <= needed && !HasFailure(); number += needed / kTries + 1) {
        SCOPED_TRACE("allocation " + std::to_string(number) + " of " + std::to_string(needed));
        const int64_t held = blocksHeld;
        writeText(archive, "old");
        writeText(picture, "old");
        try {
            std::string made;
            {
                const FailingMemory failure(number);
                made = run();
            }
            EXPECT_TRUE(made == expected) << "something else came out, without a refusal";
        } catch (const std::bad_alloc&) {
            ++refused;
        }
        EXPECT_THAT(readText(archive), testing::AnyOf("old", newArchive));
        EXPECT_THAT(readText(picture), testing::AnyOf("old", newPicture));
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2) << "half a file is left";
        EXPECT_FALSE(NSGraphicsContext::currentContext());
        EXPECT_TRUE(run() == expected) << "the same work afterwards gives something else";
        EXPECT_EQ(blocksHeld, held) << "blocks are held for good";
    }
    setLogHook({});
    setStandardErrorHook({});
    EXPECT_GT(refused, 50u);
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
            const FailingMemory failing(number);
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

template <class String>
using Edits = std::vector<std::pair<const char*, std::function<void(String&)>>>;

template <class String>
void failEachAllocationOfEdits(const std::function<Ref<String>()>& make, const Edits<String>& edits) {
    uint64_t failed = 0;
    for (const auto& [name, edit] : edits) failed += failEachAllocationOfEdit(make, edit, name);
    EXPECT_GT(failed, 50u);
}

TEST(MemoryFault, LeavesAnAnnotatedStringAsItWas) {
    const Ref<QzAnnoPalette> styles = test::strokedPalette(20, 3);
    const Ref<QzAnnoKey> red = styles->annoKeyAtPriority(1), other = QzAnnoKey::keyWithName("other"_ns);
    // Longer than a row is at first, and with a key that the title lacks.
    const auto added = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(std::u16string(3000, u'x')));
    added->addAnno(other, {1, 2998});
    const Ref<NSSet> both = NSSet::setWithObjects(std::vector<Ref<QzAnnoKey>>{red, other});
    const Range range{1, 4};
    failEachAllocationOfEdits<QzMutableAnnoString>(
        [&] { return test::mixedTitle(*styles); },
        {{"a plain replacement", [&](auto& text) { text.replaceCharactersInRange(range, added->string()); }},
         {"an annotated replacement", [&](auto& text) { text.replaceCharactersInRange(range, *added); }},
         {"an insertion", [&](auto& text) { text.insertAnnoString(*added, 3); }},
         {"an insertion of itself", [&](auto& text) { text.insertAnnoString(text, 3); }},
         {"an appended string", [&](auto& text) { text.appendAnnoString(*added); }},
         {"a deletion", [&](auto& text) { text.deleteCharactersInRange(range); }},
         {"a new string", [&](auto& text) { text.setAnnoString(*added); }},
         {"a set key", [&](auto& text) { text.addAnno(other, range); }},
         {"two set keys", [&](auto& text) { text.setAnnos(both, range); }},
         {"a toggled frame", [&](auto& text) { text.toggleFrameAnno(red); }}});
}

TEST(MemoryFault, LeavesAnAttributedStringAsItWas) {
    const Ref<NSDictionary> red = test::dictionaryOf({{"colour"_ns, "red"_ns}});
    const Ref<NSDictionary> large = test::dictionaryOf({{"size"_ns, test::number(90)}});
    // Its lists of characters and of runs are full, so that whatever is added takes memory.
    const auto make = [&] {
        const auto text = NSMutableAttributedString::init();
        for (int run = 0; run < 8; ++run) text->appendString(u"four", run % 2 ? red : large);
        return text;
    };
    const std::u16string added(100, u'x');
    const Ref<NSAttributedString> runs = make()->copy();
    const Range across{5, 9}, within{1, 2};
    failEachAllocationOfEdits<NSMutableAttributedString>(
        make, {{"appended characters", [&](auto& text) { text.appendString(added, large); }},
               {"characters appended to the last run", [&](auto& text) { text.appendString(added, red); }},
               {"an appended string", [&](auto& text) { text.appendAttributedString(*runs); }},
               {"a replacement", [&](auto& text) { text.replaceCharactersInRange(across, *runs); }},
               {"a replacement by itself", [&](auto& text) { text.replaceCharactersInRange(across, text); }},
               {"a plain replacement", [&](auto& text) { text.replaceCharactersInRange(within, "some more"_ns); }},
               {"a deletion", [&](auto& text) { text.deleteCharactersInRange(across); }},
               {"new attributes", [&](auto& text) { text.setAttributes(red, within); }},
               {"one attribute", [&](auto& text) { text.addAttribute("font"_ns, "f"_ns, across); }},
               {"one attribute less", [&](auto& text) { text.removeAttribute(*"size"_ns, across); }}});
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
TEST(MemoryFault, LeavesAPaletteAndItsUndoManagerWhole) {
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
                const FailingMemory failing(number);
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
    EXPECT_GT(failed, 20u);
}

}  // namespace
}  // namespace qz
