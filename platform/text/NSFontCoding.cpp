#include <cmath>
#include <span>
#include <vector>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/text/NSFont.h"
#include "platform/foundation/DiagnosticText.h"

namespace qz {
namespace {

// The name is stored in a block of bytes: two 32-bit numbers, little-endian in every stream, for the kind of block and
// the length of the name in bytes; then the name in UTF-16 with a byte-order mark, zero-padded to a multiple of 4.
constexpr size_t kHeadBytes = 8;
constexpr uint32_t kNameKind = 6;
constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr char16_t kSwappedMark = 0xFFFE;
// The latest version of the class in such streams.
constexpr int32_t kClassVersion = 30;

void appendNumber(std::vector<uint8_t>& block, uint32_t number, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) block.push_back(static_cast<uint8_t>(number >> (8 * i)));
}

std::vector<uint8_t> blockOfName(const std::u16string& name) {
    std::vector<uint8_t> block;
    appendNumber(block, kNameKind, 4);
    appendNumber(block, static_cast<uint32_t>(2 * (name.size() + 1)), 4);
    appendNumber(block, kByteOrderMark, 2);
    for (const char16_t unit : name) appendNumber(block, unit, 2);
    block.resize((block.size() + 3) / 4 * 4);
    return block;
}

uint32_t number(std::string_view littleEndian) {
    uint32_t value = 0;
    for (size_t i = littleEndian.size(); i-- > 0;) value = value << 8 | static_cast<uint8_t>(littleEndian[i]);
    return value;
}

// Returns null if the block does not have this form.
Ref<NSString> nameInBlock(std::string_view block) {
    if (block.size() < kHeadBytes || number(block.substr(0, 4)) != kNameKind) return {};
    const uint32_t nameBytes = number(block.substr(4, 4));
    if (nameBytes > block.size() - kHeadBytes || nameBytes % 2 != 0) return {};
    std::u16string name;
    for (size_t i = 0; i < nameBytes; i += 2) {
        name += static_cast<char16_t>(number(block.substr(kHeadBytes + i, 2)));
    }
    if (name.starts_with(kSwappedMark)) {
        for (char16_t& unit : name) unit = static_cast<char16_t>(unit << 8 | unit >> 8);
    }
    if (name.starts_with(kByteOrderMark)) name.erase(0, 1);
    return name.empty() ? nullptr : NSString::stringWithCharacters(std::move(name));
}

void encodeFont(const NSObject& object, NSArchiver& archiver) {
    const auto& font = static_cast<const NSFont&>(object);
    const std::vector<uint8_t> block = blockOfName(font.fontName()->characters());
    archiver.encodeInt(static_cast<int32_t>(block.size()));
    archiver.encodeChars(block);
    archiver.encodeFloat(font.pointSize());
    // The meaning of these is unknown; most fonts have 0, 1, 0, 0.
    for (const bool value : {false, true, false, false}) archiver.encodeBool(value);
}

Ref<NSObject> fontOtherwise(const NSString& name, float size, const NSFont::Library& library) {
    const Ref<NSFont> font = NSFont::titleBarFontOfSize(size, library);
    NSLog("The archive's font %@ at %@ points is not available; %@ at %@ points is used\n",
          {quotedExcerpt(name.utf8()), shortestDecimal(size), font->fontName(), shortestDecimal(font->pointSize())});
    return font;
}

Ref<NSObject> decodeFont(NSUnarchiver& unarchiver) {
    const std::optional<int32_t> length = unarchiver.decodeInt();
    if (length && *length < 0) unarchiver.fail("a font's name of " + std::to_string(*length) + " bytes");
    if (!length || unarchiver.hasFailed()) return {};
    const auto block = unarchiver.decodeArrayOfObjCType('c', static_cast<size_t>(*length));
    if (!block || !unarchiver.countMemory(2 * block->size())) return {};
    const Ref<NSString> name = nameInBlock(*block);
    if (!name) unarchiver.fail("the name of a font is not stored as it should be");
    const std::optional<float> size = unarchiver.decodeFloat();
    for (int i = 0; i < 4; ++i) {
        int32_t ignored = 0;
        unarchiver.decodeValueOfObjCType("c", &ignored);
    }
    if (unarchiver.hasFailed()) return {};
    const NSFont::Library library = unarchiver.context<FontLibrary>();
    const Ref<NSFont> font = NSFont::fontWithName(*name, *size, library);
    return font ? font : fontOtherwise(*name, *size, library);
}

const CodedClassRegistration registration(
    {.name = "NSFont", .version = kClassVersion, .encode = encodeFont, .decode = decodeFont});

}  // namespace
}  // namespace qz
