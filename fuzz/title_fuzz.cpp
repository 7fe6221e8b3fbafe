// Arbitrary titles: makes a palette and an annotated string from bytes, and draws them into small frames.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <fuzzer/FuzzedDataProvider.h>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "fuzz/Fuzzing.h"
#include "platform/text/GlyphCache.h"

namespace {

using namespace qz;
using fuzz::require;

constexpr int32_t kSide = 64;

float anyFloat(FuzzedDataProvider& input) {
    switch (input.ConsumeIntegralInRange<int>(0, 7)) {
        case 0:
            return input.ConsumeFloatingPoint<float>();
        case 1: {
            constexpr float kEdges[] = {std::numeric_limits<float>::infinity(),
                                        -std::numeric_limits<float>::infinity(),
                                        std::numeric_limits<float>::quiet_NaN(),
                                        std::numeric_limits<float>::max(),
                                        std::numeric_limits<float>::denorm_min(),
                                        -0.0f,
                                        1e6f,
                                        10001};
            return input.PickValueInArray(kEdges);
        }
        default:
            return static_cast<float>(input.ConsumeIntegral<int8_t>()) / 2;
    }
}

Ref<NSObject> anyColor(FuzzedDataProvider& input) {
    const float r = input.ConsumeProbability<float>(), g = input.ConsumeProbability<float>();
    return NSColor::colorWithCalibratedRed(r, g, 0.5f, input.ConsumeBool() ? 1 : input.ConsumeProbability<float>());
}

/// Often of the attribute's kind.
Ref<NSObject> anyValue(FuzzedDataProvider& input) {
    static const Ref<NSString> kFonts[] = {"DejaVu Sans-Bold"_ns, "DejaVu Serif"_ns, "Noto Color Emoji"_ns, "none"_ns};
    switch (input.ConsumeIntegralInRange<int>(0, 8)) {
        case 0:
            return NSNumber::numberWithInt(input.ConsumeIntegralInRange<int>(-1, 5));
        case 1:
            return input.PickValueInArray(kFonts);
        case 2:
            return anyColor(input);
        case 3:
            return NSStringFromPoint({anyFloat(input), anyFloat(input)});
        case 4:
            return NSStringFromRect({{anyFloat(input), anyFloat(input)}, {anyFloat(input), anyFloat(input)}});
        case 5: {
            std::vector<Ref<NSObject>> numbers(input.ConsumeIntegralInRange<size_t>(3, 5));
            for (Ref<NSObject>& number : numbers) number = NSNumber::numberWithFloat(anyFloat(input));
            return NSArray::arrayWithObjects(std::move(numbers));
        }
        case 6:
            return QzBBoxInfo::initWithColor(NSColor::colorWithCalibratedRed(0, 0, 1, 1),
                                             input.ConsumeIntegral<int8_t>());
        default:
            return NSNumber::numberWithFloat(anyFloat(input));
    }
}

void giveAttributes(QzMutableAnno& anno, FuzzedDataProvider& input) {
    const Ref<NSString> names[] = {QzFontAttribute,
                                   QzFontSizeAttribute,
                                   QzBoldAttribute,
                                   QzItalicAttribute,
                                   QzUnderlineAttribute,
                                   QzStrikeThroughAttribute,
                                   QzTextColorAttribute,
                                   QzLeadingAttribute,
                                   QzHorizontalAlignmentAttribute,
                                   QzVerticalAlignmentAttribute,
                                   QzBoundingMarginsAttribute,
                                   QzBoundingBoxAttribute,
                                   QzTextBoundingBoxAppearanceAttribute,
                                   QzBackgroundColorAttribute,
                                   QzBackgroundOffsetAttribute,
                                   QzBackgroundWidthAttribute,
                                   QzBackground2ColorAttribute,
                                   QzBackground2OffsetAttribute,
                                   QzBackground2WidthAttribute,
                                   NSKernAttributeName,
                                   NSBaselineOffsetAttributeName,
                                   NSObliquenessAttributeName};
    for (auto count = input.ConsumeIntegralInRange<int>(0, 6); count > 0; --count) {
        const Ref<NSString> name = input.PickValueInArray(names);
        const bool isColor =
            name == QzTextColorAttribute || name == QzBackgroundColorAttribute || name == QzBackground2ColorAttribute;
        anno.setAttribute(name, isColor && input.ConsumeBool() ? anyColor(input) : anyValue(input));
    }
}

Ref<QzAnnoPalette> anyPalette(FuzzedDataProvider& input) {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    for (auto count = input.ConsumeIntegralInRange<int>(0, 3); count > 0; --count) palette->createAnno("x"_ns);
    for (int32_t priority = 0; priority <= palette->maxPriority(); ++priority) {
        const Ref<QzMutableAnno> anno = palette->lookupAnno(palette->annoKeyAtPriority(priority))->mutableCopy();
        if (priority == 0) anno->setAttribute(QzFontSizeAttribute, NSNumber::numberWithFloat(12));
        giveAttributes(*anno, input);
        palette->replaceAnno(anno);
    }
    return palette;
}

Ref<QzAnnoString> anyTitle(FuzzedDataProvider& input, const QzAnnoPalette& palette) {
    // Joining, reordering, stacking, colour, controls, and a lone surrogate.
    static const std::u16string_view kPieces[] = {u"Title ",
                                                  u"ffi",
                                                  u"\u05E9\u05DC",
                                                  u"\u0633\u0644\u0627\u0645",
                                                  u"\u0915\u094D\u0937\u093F",
                                                  u"\u4E2D\u6587",
                                                  u"e\u0301\u0323",
                                                  u"\U0001F469\u200D\U0001F467",
                                                  u"\n",
                                                  u"\t",
                                                  u"\u2028",
                                                  u"\u202E",
                                                  u"\u2066",
                                                  u"\xD83D",
                                                  u"\u0E01\u0E33",
                                                  u"\xFFFC",
                                                  u"\0"};
    std::u16string text;
    for (auto count = input.ConsumeIntegralInRange<int>(0, 12); count > 0; --count) {
        const auto piece = input.ConsumeIntegralInRange<size_t>(0, std::size(kPieces) + 1);
        if (piece < std::size(kPieces))
            text += kPieces[piece];
        else
            text += static_cast<char16_t>(input.ConsumeIntegral<uint16_t>());
    }
    const auto title = QzMutableAnnoString::initWithString(NSString::stringWithCharacters(text));
    for (int32_t priority = 1; priority <= palette.maxPriority(); ++priority) {
        const auto start = input.ConsumeIntegralInRange<uint32_t>(0, title->length());
        const auto end =
            input.ConsumeBool() ? title->length() : input.ConsumeIntegralInRange<uint32_t>(start, title->length());
        title->addAnno(palette.annoKeyAtPriority(priority), {input.ConsumeBool() ? 0 : start, end});
    }
    return title;
}

bool isFinite(const NSRect& r) {
    return std::isfinite(r.origin.x) && std::isfinite(r.origin.y) && std::isfinite(r.size.width) &&
           std::isfinite(r.size.height);
}

void checkPixels(const NSBitmapImageRep& bitmap) {
    for (int32_t y = 0; y < bitmap.pixelsHigh(); ++y) {
        const uint8_t* const row = bitmap.row(y);
        for (int32_t i = 0; i < 4 * bitmap.pixelsWide(); ++i) require(row[i] <= row[i | 3], "pixels are premultiplied");
    }
}

/// The largest difference in any channel; 255 if the sizes differ.
int differenceOf(const NSBitmapImageRep& a, const NSBitmapImageRep& b) {
    if (a.pixelsWide() != b.pixelsWide() || a.pixelsHigh() != b.pixelsHigh()) return 255;
    int largest = 0;
    for (int32_t y = 0; y < a.pixelsHigh(); ++y)
        for (int32_t i = 0; i < 4 * a.pixelsWide(); ++i)
            largest = std::max(largest, std::abs(a.row(y)[i] - b.row(y)[i]));
    return largest;
}

Ref<QzAnnoStringToScreen> pipeline(const Ref<QzAnnoPalette>& palette, const Ref<QzAnnoString>& title) {
    const Ref<QzAnnoStringToScreen> screen = QzAnnoStringToScreen::init();
    screen->setPalette(palette);
    screen->setScreenSize({kSide, kSide}, {kSide, kSide});
    screen->setAnnoString(title);
    return screen;
}

void check(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const bool fullScreen = input.ConsumeBool();
    const Ref<QzAnnoPalette> palette = anyPalette(input);
    const Ref<QzAnnoString> title = anyTitle(input, *palette);
    // Cached glyphs of earlier inputs must work as well as new ones.
    static const Ref<GlyphCache> kept = GlyphCache::init();

    const Ref<QzAnnoStringToScreen> screen = pipeline(palette, title);
    screen->layoutManager()->setGlyphCache(kept);
    NSRect place;
    const Ref<NSBitmapImageRep> drawn = screen->bitmapInFullScreen(fullScreen, &place);
    require(isFinite(place) && isFinite(screen->textContainer()->textBox()), "places are finite");
    const RenderReport report = screen->reportInFullScreen(fullScreen);
    for (const RenderReport::Clipping& clipping : report.clipped)
        require(clipping.characters.end() <= title->length(), "what is clipped is part of the text");
    if (!drawn) return;
    require(drawn->pixelsWide() <= kSide + 1 && drawn->pixelsHigh() <= kSide + 1,
            "a picture is no larger than the screen");
    checkPixels(*drawn);

    const Ref<QzAnnoStringToScreen> fresh = pipeline(palette, title);
    fresh->layoutManager()->glyphCache()->setBytesMax(input.ConsumeBool() ? 0 : GlyphCache::kBytesMaxDefault);
    const Ref<NSBitmapImageRep> again = fresh->bitmapInFullScreen(fullScreen);
    // A layer made of cached parts is rounded once more than one made directly.
    require(again && differenceOf(*drawn, *again) <= 2, "kept glyphs and fresh ones draw the same");
}

}  // namespace

QZ_FUZZ(check)
