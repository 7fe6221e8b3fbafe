#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/platform/text/NSTextStorage.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// Attributes with the font used for measuring, plus `further`.
inline Ref<NSDictionary> textAttributes(ObjectMap further = {}, float pointSize = 20) {
    ObjectMap map;
    map.set(NSFontAttributeName, NSFont::fontWithName(*"DejaVu Sans"_ns, pointSize));
    map.setAll(further);
    return NSDictionary::dictionaryWithMap(std::move(map));
}

inline ObjectMap paragraphStyle(const NSParagraphStyle::Values& values) {
    ObjectMap map;
    map.set(NSParagraphStyleAttributeName, NSParagraphStyle::paragraphStyleWithValues(values));
    return map;
}

inline ObjectMap attributePair(const Ref<NSString>& name, Ref<NSObject> value) {
    ObjectMap map;
    map.set(name, std::move(value));
    return map;
}

inline Ref<NSAttributedString> attributedString(std::string_view utf8,
                                                Ref<NSDictionary> attributes = textAttributes()) {
    return NSAttributedString::initWithString(NSString::stringWithUTF8String(utf8), std::move(attributes));
}

/// A text storage with one layout manager and one container. No padding, so that widths are those of the text.
struct TextSystem {
    Ref<NSTextStorage> storage = NSTextStorage::init();
    Ref<NSLayoutManager> manager = NSLayoutManager::init();
    Ref<NSTextContainer> container;

    explicit TextSystem(const NSAttributedString& text, NSSize size = {}, float padding = 0)
        : TextSystem(text, NSTextContainer::initWithContainerSize(size), padding) {}

    TextSystem(const NSAttributedString& text, Ref<NSTextContainer> inContainer, float padding = 0)
        : container(std::move(inContainer)) {
        container->setLineFragmentPadding(padding);
        container->replaceLayoutManager(manager);
        manager->replaceTextStorage(storage);
        storage->setAttributedString(text);
    }

    NSRect usedRect() const { return manager->usedRectForTextContainer(*container); }
    Range glyphs() const { return manager->glyphRangeForTextContainer(*container); }

    /// The glyph ranges of the lines in the container.
    std::vector<Range> lines() const {
        std::vector<Range> lines;
        for (uint64_t glyph = glyphs().location; glyph < glyphs().end(); glyph = lines.back().end()) {
            Range line;
            manager->lineFragmentRectForGlyphAtIndex(static_cast<uint32_t>(glyph), &line);
            lines.push_back(line);
        }
        return lines;
    }

    /// The texts of the lines, each with the white space that hangs at its end.
    std::vector<std::string> lineTexts() const {
        std::vector<std::string> texts;
        for (const Range& line : lines()) {
            const Range characters = manager->characterRangeForGlyphRange(line);
            texts.push_back(utf8FromUtf16(
                std::u16string_view(storage->characters()).substr(characters.location, characters.length)));
        }
        return texts;
    }

    /// Where the glyphs of a character begin, container coordinates.
    float xOfCharacter(uint32_t character) const {
        const uint32_t glyph = manager->glyphRangeForCharacterRange({character, 1}).location;
        return manager->lineFragmentRectForGlyphAtIndex(glyph).origin.x + manager->locationForGlyphAtIndex(glyph).x;
    }
};

/// The width of a text in one line.
inline float widthOf(std::string_view utf8, Ref<NSDictionary> attributes = textAttributes()) {
    return TextSystem(*attributedString(utf8, std::move(attributes))).usedRect().size.width;
}

}  // namespace qz
