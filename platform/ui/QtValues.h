#pragma once

#include <QColor>
#include <QImage>
#include <QString>

#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

// Converts values between the toolkit and this library.

inline QString toQt(const NSString& text) {
    return QString::fromUtf16(text.characters().data(), static_cast<qsizetype>(text.length()));
}
inline QString toQt(const std::string& utf8) {
    return QString::fromStdString(utf8);
}
inline Ref<NSString> fromQt(const QString& text) {
    return NSString::stringWithCharacters(text.toStdU16String());
}
inline QColor toQt(const NSColor& color) {
    return QColor::fromRgbF(color.redComponent(), color.greenComponent(), color.blueComponent(),
                            color.alphaComponent());
}
inline Ref<NSColor> fromQt(const QColor& color) {
    return NSColor::colorWithCalibratedRed(color.redF(), color.greenF(), color.blueF(), color.alphaF());
}
/// An image that shares the bitmap's pixels, which must outlive it.
inline QImage imageOf(const NSBitmapImageRep& bitmap) {
    return QImage(bitmap.bitmapData(), bitmap.pixelsWide(), bitmap.pixelsHigh(), bitmap.bytesPerRow(),
                  QImage::Format_RGBA8888_Premultiplied);
}

}  // namespace qz
