#include <random>

#include <gmock/gmock.h>

#include "QzAnno/platform/graphics/NSImage.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/foundation/ObjectMap.h"
#include "tests/support/Pixels.h"
#include "tests/text/TextSystem.h"

namespace qz {
namespace {

using test::boxOf;
using test::Pixel;
using test::pixelAt;
using test::PixelBox;

/// Grants what a function says, and counts how often it is asked.
class AskedContainer final : public NSTextContainer {
public:
    using Grant = std::function<NSRect(const NSRect&)>;

    explicit AskedContainer(Grant grant) : NSTextContainer({}), grant_(std::move(grant)) {}
    NSRect lineFragmentRectForProposedRect(NSRect proposedRect, NSLineSweepDirection, NSLineMovementDirection,
                                           NSRect*) override {
        ++asked;
        return grant_(proposedRect);
    }
    int asked = 0;

private:
    Grant grant_;
};

float lineHeight() {
    return TextSystem(*attributedString("x")).usedRect().size.height;
}

TEST(Containers, anEmptyFragmentEndsTheContainer) {
    const auto none = std::make_shared<AskedContainer>([](const NSRect&) { return NSRect{{3, 3}, {0, 0}}; });
    const TextSystem system(*attributedString("one two"), none);
    EXPECT_EQ(system.glyphs(), Range{});
    EXPECT_EQ(system.usedRect(), NSRect());
    EXPECT_EQ(none->asked, 1) << "a full container is not asked again";
    // Text without a place still has glyphs.
    EXPECT_EQ(system.manager->numberOfGlyphs(), 7u);
    EXPECT_FALSE(system.manager->textContainerForGlyphAtIndex(2));
    EXPECT_EQ(system.manager->firstUnlaidGlyphIndex(), 7u) << "nobody need wait for it";
    EXPECT_EQ(system.manager->lineFragmentRectForGlyphAtIndex(2), NSRect());
}

TEST(Containers, linesAreAsWideAsTheirFragments) {
    // The first line has half the room, in the middle of the container.
    const float narrow = widthOf("one"), wide = widthOf("two three four");
    const auto container = std::make_shared<AskedContainer>([&](const NSRect& proposed) {
        return NSRect{{7, proposed.origin.y}, {proposed.origin.y < 5 ? narrow : wide, proposed.size.height}};
    });
    const TextSystem system(*attributedString("one two three four"), container);
    EXPECT_THAT(system.lineTexts(), testing::ElementsAre("one ", "two three four"));
    EXPECT_NEAR(system.usedRect().origin.x, 7, 0.01);
}

TEST(Containers, aTallerLineAsksAgainWithItsHeight) {
    std::vector<float> heights;
    const auto container = std::make_shared<AskedContainer>([&](const NSRect& proposed) {
        heights.push_back(proposed.size.height);
        return proposed;
    });
    const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("a "));
    text->appendAttributedString(*attributedString("B", textAttributes({}, 40)));
    const TextSystem system(*text, container);
    system.glyphs();
    ASSERT_EQ(heights.size(), 2u);
    EXPECT_NEAR(heights[0], lineHeight(), 0.01);
    EXPECT_NEAR(heights[1], 2 * lineHeight(), 0.01);
}

TEST(Containers, aFragmentThatIsTooLowIsUsedAndCutsTheUsedRectangle) {
    const auto container = std::make_shared<AskedContainer>([](const NSRect& proposed) {
        return NSRect{proposed.origin, {proposed.size.width, 5}};
    });
    const TextSystem system(*attributedString("a\nb"), container);
    EXPECT_EQ(system.glyphs().length, 3u);
    EXPECT_NEAR(system.usedRect().size.height, 10, 0.01);
}

TEST(Containers, textFlowsFromOneIntoTheNext) {
    const TextSystem system(*attributedString("a\nb\nc\nd\ne"), {100, 2 * lineHeight()});
    const auto second = NSTextContainer::initWithContainerSize({100, 2 * lineHeight() + 5});
    system.manager->addTextContainer(second);
    EXPECT_EQ(system.manager->glyphRangeForTextContainer(*second), (Range{4, 4}));
    EXPECT_EQ(system.glyphs(), (Range{0, 4}));
    Range range;
    EXPECT_EQ(system.manager->textContainerForGlyphAtIndex(5, &range), second);
    EXPECT_EQ(range, (Range{4, 4}));
    EXPECT_NEAR(system.manager->lineFragmentRectForGlyphAtIndex(4).origin.y, 0, 0.01);
    EXPECT_FALSE(system.manager->textContainerForGlyphAtIndex(8)) << "no room for the fifth line";
    system.manager->removeTextContainer(*second);
    EXPECT_FALSE(system.manager->textContainerForGlyphAtIndex(5));
    EXPECT_FALSE(second->layoutManager());
}

TEST(Containers, aChangeOfSizeLaysOutAnew) {
    const TextSystem system(*attributedString("one two three"), {500, 0});
    EXPECT_EQ(system.lineTexts().size(), 1u);
    system.container->setContainerSize({widthOf("three") + 1, 0});
    EXPECT_THAT(system.lineTexts(), testing::ElementsAre("one ", "two ", "three"));
}

TEST(Containers, onlyWhatIsAskedForIsLaidOut) {
    const int lines = 20000;
    std::string text;
    for (int i = 0; i < lines; ++i) text += "word word word word word word ";
    const auto container = std::make_shared<AskedContainer>([](const NSRect& proposed) {
        return proposed.origin.y > 1e6f ? NSRect() : NSRect{proposed.origin, {400, proposed.size.height}};
    });
    const TextSystem system(*attributedString(text), container);
    system.manager->locationForGlyphAtIndex(300);
    EXPECT_LE(container->asked, 20);
    const int askedForAll = system.glyphs().length > 0 ? container->asked : 0;
    EXPECT_LE(askedForAll, 2 * static_cast<int>(system.lines().size())) << "one proposal a line";
    system.usedRect();
    EXPECT_EQ(container->asked, askedForAll) << "nothing is laid out twice";
}

TEST(Containers, aContainerMayChangeWhileItIsAsked) {
    NSTextContainer* self = nullptr;
    const auto container = std::make_shared<AskedContainer>([&](const NSRect& proposed) {
        if (proposed.origin.y > 30) self->layoutManager()->textStorage()->deleteCharactersInRange({0, 1});
        return proposed;
    });
    self = container.get();
    const TextSystem system(*attributedString("a\nb\nc\nd\ne"), container);
    system.manager->numberOfGlyphs();
    system.usedRect();
    EXPECT_LE(system.storage->length(), 9u);
}

/// A line of everything that layout knows, to compare two layouts by.
std::vector<std::string> layoutOf(const NSLayoutManager& manager) {
    std::vector<std::string> glyphs;
    const Ref<NSTextStorage> text = manager.textStorage();
    for (uint32_t i = 0; i < manager.numberOfGlyphs(); ++i) {
        std::string glyph = std::to_string(manager.glyphAtIndex(i)) + " of " +
                            std::to_string(manager.characterIndexForGlyphAtIndex(i)) + " at " +
                            NSStringFromPoint(manager.locationForGlyphAtIndex(i))->utf8() + " in " +
                            NSStringFromRect(manager.lineFragmentRectForGlyphAtIndex(i))->utf8();
        glyphs.push_back(std::move(glyph));
    }
    return glyphs;
}

TEST(Incremental, editsLeadToTheLayoutOfTheFinalText) {
    const char* snippets[] = {"word ", "office ", "שלום ",    "سلام",    "日本語",   "\n",    "\r",
                              "\r\n",  "\t",      "👍🏽", "e\u0301", "a\u00ADb", "\u2029"};
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const TextSystem edited(*attributedString("start\ntext"), {120, 150});
        for (int step = 0; step < 60; ++step) {
            const uint32_t length = edited.storage->length();
            const auto location = static_cast<uint32_t>(random() % (length + 1));
            const Range range = {location, static_cast<uint32_t>(random() % (std::min(length - location, 6u) + 1))};
            const bool isDeletion = random() % 3 == 0;
            const float size = random() % 5 == 0 ? 31 : 20;
            edited.storage->replaceCharactersInRange(
                range, *attributedString(isDeletion ? "" : snippets[random() % std::size(snippets)],
                                         textAttributes({}, size)));
            if (random() % 4 == 0) edited.container->setContainerSize({60 + static_cast<float>(random() % 90), 150});
            if (random() % 2 == 0) edited.usedRect();
        }
        const TextSystem fresh(*edited.storage->copy(), edited.container->containerSize());
        ASSERT_EQ(layoutOf(*edited.manager), layoutOf(*fresh.manager)) << edited.storage->string()->utf8();
        EXPECT_EQ(edited.usedRect(), fresh.usedRect());
    }
}

TEST(Incremental, aSeriesOfEditsIsToldOnce) {
    const TextSystem system(*attributedString("one\ntwo\nthree"), {500, 0});
    system.glyphs();
    system.storage->beginEditing();
    system.storage->replaceCharactersInRange({0, 3}, "1"_ns);
    system.storage->appendString(u"\nfour", textAttributes());
    system.storage->replaceCharactersInRange({2, 3}, "2"_ns);
    // Meanwhile glyphs and text do not match: nothing may reach beyond either.
    system.manager->numberOfGlyphs();
    system.manager->drawGlyphsForGlyphRange({0, 100}, {});
    system.storage->endEditing();
    EXPECT_THAT(system.lineTexts(), testing::ElementsAre("1\n", "2\n", "three\n", "four"));
}

TEST(Incremental, aTextSystemCanBeTakenApart) {
    TextSystem system(*attributedString("text"), {500, 0});
    system.glyphs();
    const auto other = NSTextStorage::init();
    other->setAttributedString(*attributedString("other text"));
    system.manager->replaceTextStorage(other);
    EXPECT_EQ(system.glyphs().length, 10u);
    EXPECT_TRUE(system.storage->layoutManagers().empty());
    system.manager->replaceTextStorage({});
    EXPECT_EQ(system.manager->numberOfGlyphs(), 0u);
    system.manager->drawGlyphsForGlyphRange({0, 5}, {});
}

Ref<NSBitmapImageRep> drawn(const TextSystem& system) {
    const Ref<NSImage> image = NSImage::initWithSize({90, 90});
    image->setFlipped(true);
    image->lockFocus();
    system.manager->drawGlyphsForGlyphRange(system.glyphs(), {0, 0});
    image->unlockFocus();
    return image->bitmap();
}

TEST(Drawing, lettersStandUprightOnTheBaselineAndLeanToTheRight) {
    // The stem of an L leans; its foot, on the baseline, stays.
    struct Letter {
        PixelBox box;
        int top, bottom;  // first covered pixel of the row
    };
    const auto letterOf = [](float slant) {
        const ObjectMap attributes = attributePair(NSObliquenessAttributeName, NSNumber::numberWithFloat(slant));
        const auto bitmap = drawn(TextSystem(*attributedString("L", textAttributes(attributes, 60))));
        const PixelBox box = boxOf(*bitmap, [](Pixel p) { return p.alpha > 127; });
        Letter letter = {box, 0, 0};
        while (pixelAt(*bitmap, letter.top, box.top).alpha < 128) ++letter.top;
        while (pixelAt(*bitmap, letter.bottom, box.bottom - 1).alpha < 128) ++letter.bottom;
        return letter;
    };
    const Letter upright = letterOf(0), oblique = letterOf(0.5f);
    ASSERT_NEAR(upright.box.height(), 44, 2) << "a capital is about 0.73 of the size high";
    EXPECT_EQ(upright.top, upright.bottom);
    EXPECT_NEAR(oblique.bottom, upright.bottom, 1);
    EXPECT_NEAR(oblique.top - upright.top, 22, 2) << "half a point for each of 44";
}

TEST(TemporaryAttributes, lieOverStretchesAndMoveWithTheText) {
    const TextSystem system(*attributedString("0123456789"));
    NSLayoutManager& manager = *system.manager;
    const auto add = [&](const char* name, Range range) {
        manager.addTemporaryAttributes(
            *NSDictionary::dictionaryWithMap(attributePair(NSString::stringWithUTF8String(name), "v"_ns)), range);
    };
    add("a", {2, 4});
    add("b", {4, 4});
    Range range;
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(0, &range)->count(), 0u);
    EXPECT_EQ(range, (Range{0, 2}));
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(4, &range)->count(), 2u);
    EXPECT_EQ(range, (Range{4, 2}));
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(9, &range)->count(), 0u);
    EXPECT_EQ(range, (Range{8, 2}));
    manager.removeTemporaryAttribute(*"a"_ns, {0, 5});
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(2)->count(), 0u);
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(4)->count(), 1u);
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(5)->count(), 2u);
    system.storage->setAttributedString(*attributedString("ab"));
    EXPECT_EQ(manager.temporaryAttributesAtCharacterIndex(1)->count(), 0u) << "the text they lay over is gone";
    EXPECT_FALSE(manager.temporaryAttributesAtCharacterIndex(2));
}

}  // namespace
}  // namespace qz
