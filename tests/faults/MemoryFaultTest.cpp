// Memory runs out at any point during an operation: the call throws `std::bad_alloc` and nothing else happens.
// Repeating the operation gives the usual result and leaks nothing. A save leaves either the whole old file or the
// whole new one.
#include <functional>
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
#include "tests/support/AllocationCount.h"
#include "tests/support/FontFiles.h"
#include "tests/support/Palettes.h"
#include "tests/support/TemporaryFolder.h"

namespace qz {
namespace {

using test::FailingMemory;

/// A render by a pipeline that outlives the failure, and a save of what it drew.
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
        const int64_t held = test::blocksHeld();
        writeText(archive, "old");
        writeText(picture, "old");
        try {
            std::string made;
            {
                const FailingMemory failure(number);
                made = run();
            }
            EXPECT_TRUE(made == expected) << "no exception, and yet another result";
        } catch (const std::bad_alloc&) {
            ++refused;
        }
        EXPECT_THAT(readText(archive), testing::AnyOf("old", newArchive));
        EXPECT_THAT(readText(picture), testing::AnyOf("old", newPicture));
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2)
            << "half a file is left behind";
        EXPECT_FALSE(NSGraphicsContext::currentContext());
        EXPECT_TRUE(run() == expected) << "the same work afterwards gives something else";
        EXPECT_EQ(test::blocksHeld(), held) << "blocks are held for good";
    }
    setLogHook({});
    setStandardErrorHook({});
    EXPECT_GT(refused, 50u);
}

/// Edits a new string with each allocation failing in turn: the string is either unchanged or fully edited.
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
    // Longer than a new row, and with a key that the title does not have.
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
    // Its lists of characters and runs are full, so that any addition allocates.
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

}  // namespace
}  // namespace qz
