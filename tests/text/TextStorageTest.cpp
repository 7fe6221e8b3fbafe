#include <gmock/gmock.h>

#include "tests/text/TextSystem.h"

namespace qz {
namespace {

Ref<NSFont> fontAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey<NSFont>(*NSFontAttributeName);
}
bool isSubstituteAt(const NSAttributedString& text, uint32_t index) {
    return text.attributesAtIndex(index)->objectForKey(*NSOriginalFontAttributeName) != nullptr;
}

/// A font for Latin letters that has neither Hebrew nor Thai nor Japanese.
const Ref<NSFont> kAsked = NSFont::fontWithName(*"Noto Sans"_ns, 20);
const Ref<NSDictionary> kLatinOnly = NSDictionary::dictionaryWithMap(attributePair(NSFontAttributeName, kAsked));

TEST(FontFixing, givesTextAFontThatHasItsCharacters) {
    const auto storage = NSTextStorage::init();
    storage->setAttributedString(*attributedString("Latin, שלום ไทย 日本語 👍🏽!", kLatinOnly));
    for (uint32_t i = 0; i < storage->length(); ++i) {
        const bool isLatin = storage->characters()[i] < 0x80;
        EXPECT_EQ(fontAt(*storage, i)->isEqual(*kAsked), isLatin) << "blanks and Latin keep the font asked for: " << i;
        EXPECT_EQ(isSubstituteAt(*storage, i), !isLatin);
    }
    EXPECT_TRUE(fontAt(*storage, 7)->coversText(u"שלום"));
    storage->appendString(u"ab", nullptr);
    EXPECT_TRUE(fontAt(*storage, storage->length() - 1)) << "without attributes too";
    // A mark of another colour stays with its letter.
    storage->setAttributedString(*attributedString("שָׁ", kLatinOnly));
    storage->addAttribute(NSForegroundColorAttributeName, NSColor::whiteColor(), {1, 1});
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 1));
    EXPECT_EQ(fontAt(*storage, 0), fontAt(*storage, 2));
}

TEST(FontFixing, goesBackToTheFontAskedForWhereItServesAgain) {
    const auto storage = NSTextStorage::init(), copy = NSTextStorage::init();
    storage->setAttributedString(*attributedString("שלום", kLatinOnly));
    copy->setAttributedString(*storage->copy());
    EXPECT_TRUE(copy->isEqual(*storage)) << "a copy of a fixed text asks for the same as the text did";
    copy->replaceCharactersInRange({0, 4}, "Latin"_ns);
    EXPECT_TRUE(fontAt(*copy, 0)->isEqual(*kAsked));
    EXPECT_FALSE(isSubstituteAt(*copy, 0));
    // A font that is set over a substitute is what is asked for from then on.
    storage->addAttribute(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Sans"_ns, 20), {0, 4});
    EXPECT_EQ(fontAt(*storage, 0)->familyName()->utf8(), "DejaVu Sans");
    EXPECT_FALSE(isSubstituteAt(*storage, 0));
}

}  // namespace
}  // namespace qz
