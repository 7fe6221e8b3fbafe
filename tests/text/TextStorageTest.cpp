#include <gmock/gmock.h>

#include "tests/text/TextSystem.h"

namespace qz {
namespace {

Ref<NSFont> fontAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName);
}
Ref<NSFont> originalAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey<NSFont>(*NSOriginalFontAttributeName);
}

/// A font for Latin letters that has neither Hebrew nor Thai nor Japanese.
Ref<NSDictionary> latinOnly(float size = 20) {
    return NSDictionary::dictionaryWithMap(
        attributePair(NSFontAttributeName, NSFont::fontWithName(*"Noto Sans"_ns, size)));
}

TEST(FontFixing, goesBackToTheFontAskedForWhereItServesAgain) {
    const auto storage = NSTextStorage::init();
    storage->setAttributedString(*attributedString("שלום", latinOnly()));
    storage->replaceCharactersInRange({0, 4}, "Latin"_ns);
    EXPECT_TRUE(fontAt(*storage, 0)->isEqual(*NSFont::fontWithName(*"Noto Sans"_ns, 20)));
    EXPECT_FALSE(originalAt(*storage, 0));
    // A copy of a fixed text asks for the same as the text did.
    storage->setAttributedString(*attributedString("שלום", latinOnly()));
    const auto copy = NSTextStorage::init();
    copy->setAttributedString(*storage->copy());
    EXPECT_TRUE(copy->isEqual(*storage));
    // A font that is set over a substitute is what is asked for from then on.
    storage->addAttribute(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Sans"_ns, 20), {0, 4});
    EXPECT_EQ(fontAt(*storage, 0)->familyName()->utf8(), "DejaVu Sans");
    EXPECT_FALSE(originalAt(*storage, 0));
}

TEST(FontFixing, textWithoutAFontGetsOne) {
    const auto storage = NSTextStorage::init();
    storage->appendString(u"ab", nullptr);
    EXPECT_TRUE(fontAt(*storage, 1));
    EXPECT_FALSE(originalAt(*storage, 1));
}

TEST(FontFixing, doesNotSplitAClusterWhoseMarkHasAnotherColour) {
    const auto text = NSMutableAttributedString::initWithAttributedString(*attributedString("שָׁ", latinOnly()));
    text->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {1, 1});
    const auto storage = NSTextStorage::init();
    storage->setAttributedString(*text);
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 1));
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 2));
}

}  // namespace
}  // namespace qz
