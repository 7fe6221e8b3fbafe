#include "QzAnno/platform/text/NSFont.h"

#include <algorithm>
#include <functional>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "platform/text/FontFace.h"
#include "platform/text/GlyphPath.h"

namespace qz {
namespace {

constexpr float kPointSizeOtherwise = 12.0f;

bool isUsableSize(float size) {
    return size <= NSFont::kPointSizeMax;  // and so no NaN
}

const NSFont::Library& orShared(const NSFont::Library& library) {
    return library ? library : FontLibrary::shared();
}

}  // namespace

NSFont::NSFont(Library library, std::shared_ptr<const FontFace> face, float pointSize, FontTraits traits)
    : library_(std::move(library)), face_(std::move(face)), pointSize_(pointSize), traits_(traits) {}

Ref<NSFont> NSFont::fontWithName(const NSString& name, float size, const Library& library) {
    if (!isUsableSize(size)) return {};
    const Library& fonts = orShared(library);
    auto face = fonts->faceWithName(name.utf8());
    if (!face) return {};
    return std::make_shared<NSFont>(fonts, std::move(face), size > 0 ? size : kPointSizeOtherwise);
}

Ref<NSFont> NSFont::titleBarFontOfSize(float size, const Library& library) {
    return systemFontOfSize(size, library);
}

Ref<NSFont> NSFont::systemFontOfSize(float size, const Library& library) {
    const Library& fonts = orShared(library);
    return std::make_shared<NSFont>(fonts, fonts->systemFace(),
                                    size > 0 ? std::min(size, kPointSizeMax) : systemFontSize());
}

Ref<NSFont> NSFont::fontWithSize(float size) const {
    if (!isUsableSize(size)) return {};
    return std::make_shared<NSFont>(library_, face_, size > 0 ? size : kPointSizeOtherwise, traits_);
}

Ref<NSFont> NSFont::fontWithTraits(FontTraits traits) const {
    auto face = library_->faceWithTraits(face_->installedFont(), traits);
    return std::make_shared<NSFont>(library_, face ? std::move(face) : face_, pointSize_, traits);
}

FontTraits NSFont::unmetTraits() const {
    const InstalledFont& font = face_->installedFont();
    if (font.isColour) return {};
    FontTraits unmet = traits_;
    if (unmet.bold == font.isBold()) unmet.bold.reset();
    if (unmet.italic == font.isItalic()) unmet.italic.reset();
    return unmet;
}

Ref<NSString> NSFont::fontName() const {
    return NSString::stringWithUTF8String(face_->installedFont().fontName);
}

Ref<NSString> NSFont::familyName() const {
    return NSString::stringWithUTF8String(face_->installedFont().familyName);
}

float NSFont::ascender() const {
    return points(face_->metrics().ascender);
}

float NSFont::descender() const {
    return points(face_->metrics().descender);
}

float NSFont::leading() const {
    return points(face_->metrics().lineGap);
}

FontRule NSFont::underline() const {
    const auto [top, thickness] = face_->underline();
    return {points(top), points(thickness)};
}

FontRule NSFont::strikeThrough() const {
    const auto [top, thickness] = face_->strikeThrough();
    return {points(top), points(thickness)};
}

NSGlyph NSFont::glyphForCharacter(char32_t character) const {
    return face_->glyphForCharacter(character);
}

bool NSFont::coversText(std::u16string_view text) const {
    return face_->coversText(text);
}

NSSize NSFont::advancementForGlyph(NSGlyph glyph) const {
    return {points(face_->advanceOfGlyph(glyph)), 0};
}

NSRect NSFont::boundingRectForGlyph(NSGlyph glyph) const {
    const NSRect box = face_->outlineOfGlyph(glyph)->controlPointBounds();
    return {{points(box.origin.x), points(box.origin.y)}, {points(box.size.width), points(box.size.height)}};
}

bool NSFont::isGlyphDamaged(NSGlyph glyph) const {
    return face_->isGlyphDamaged(glyph);
}

float NSFont::points(double fontUnits) const {
    return static_cast<float>(fontUnits * pointSize_ / face_->unitsPerEm());
}

bool NSFont::isEqual(const NSObject& other) const {
    const auto* font = dynamic_cast<const NSFont*>(&other);
    return font && looksLike(*font) && font->traits_ == traits_;
}

bool NSFont::looksLike(const NSFont& other) const {
    return other.face_ == face_ && other.pointSize_ == pointSize_;
}

size_t NSFont::hash() const {
    return std::hash<const void*>()(face_.get()) * 31 + std::hash<float>()(pointSize_);
}

std::string NSFont::description() const {
    return face_->installedFont().fontName + " " + shortestDecimal(pointSize_) + " pt";
}

void appendBezierPathWithGlyph(NSBezierPath& path, NSGlyph glyph, const NSFont& font) {
    const NSBezierPath::Point origin = path.currentPoint();
    const double scale = font.pointSize() / font.face().unitsPerEm();
    NSBezierPath outline = *font.face().outlineOfGlyph(glyph);
    outline.transformUsingAffineTransform({.m11 = scale, .m22 = scale, .tX = origin.x, .tY = origin.y});
    path.appendBezierPath(outline);
    path.moveToPoint({origin.x + scale * font.face().advanceOfGlyph(glyph), origin.y});
}

}  // namespace qz
