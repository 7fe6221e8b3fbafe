#pragma once

#include <utility>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "platform/foundation/ObjectMap.h"

namespace qz::test {

using Attributes = std::vector<std::pair<Ref<NSString>, Ref<NSObject>>>;

inline Ref<NSNumber> number(double value) {
    return NSNumber::numberWithFloat(static_cast<float>(value));
}

inline Ref<NSNumber> integer(int32_t value) {
    return NSNumber::numberWithInt(value);
}

inline Ref<NSColor> rgba(float red, float green, float blue, float alpha = 1) {
    return NSColor::colorWithCalibratedRed(red, green, blue, alpha);
}

/// Left, right, top, bottom.
inline Ref<NSArray> margins(double left, double right, double top, double bottom) {
    return NSArray::arrayWithObjects({number(left), number(right), number(top), number(bottom)});
}

inline Ref<NSDictionary> dictionaryOf(const Attributes& attributes) {
    ObjectMap map;
    for (const auto& [name, value] : attributes) map.set(name, value);
    return NSDictionary::dictionaryWithMap(std::move(map));
}

inline void giveAttributes(QzAnnoPalette& palette, const Ref<const QzAnno>& anno, const Attributes& attributes) {
    const Ref<QzMutableAnno> changed = anno->mutableCopy();
    for (const auto& [name, value] : attributes) changed->setAttribute(name, value);
    palette.replaceAnno(changed);
}

/// An editable palette whose global annotation has these attributes.
inline Ref<QzAnnoPalette> paletteWithGlobals(const Attributes& attributes) {
    const Ref<QzAnnoPalette> palette = QzAnnoPalette::init();
    palette->setUndoManager(NSUndoManager::init());
    giveAttributes(*palette, palette->lookupAnno({}), attributes);
    return palette;
}

/// Adds an annotation on top and returns its key.
inline Ref<QzAnnoKey> addAnnotation(QzAnnoPalette& palette, const char* name, const Attributes& attributes) {
    const Ref<const QzAnno> anno = palette.createAnno(NSString::stringWithUTF8String(name));
    giveAttributes(palette, anno, attributes);
    return anno->annokey();
}

/// A palette whose titles have a stroke behind them and a box, with the annotation "Red" of priority 1.
inline Ref<QzAnnoPalette> strokedPalette(double fontSize, double strokeWidth) {
    const Ref<QzAnnoPalette> palette =
        paletteWithGlobals({{QzFontSizeAttribute, number(fontSize)},
                            {QzBackgroundColorAttribute, rgba(0, 0, 0)},
                            {QzBackgroundWidthAttribute, number(strokeWidth)},
                            {QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::initWithColor(rgba(0, 0, 1), 1)}});
    addAnnotation(*palette, "Red", {{QzTextColorAttribute, rgba(1, 0, 0, 0.5f)}});
    return palette;
}

/// Latin with a ligature, Hebrew and Chinese, with what has the priority 1 on a part of it.
inline Ref<QzMutableAnnoString> mixedTitle(const QzAnnoPalette& palette) {
    const auto title = QzMutableAnnoString::initWithString("Small \xD7\xA9\xD7\x9C ffi\n\xE4\xB8\xAD title"_ns);
    title->addAnno(palette.annoKeyAtPriority(1), {2, 5});
    return title;
}

}  // namespace qz::test
