#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// A PNG file, 8-bit RGBA with straight alpha, of a premultiplied RGBA bitmap; none for another.
Ref<NSData> pngFromBitmap(const NSBitmapImageRep& bitmap);

/// A premultiplied RGBA bitmap of a PNG file of any kind; none, with the reason in `error`, for a damaged file, one
/// that is no PNG, or one whose pixels are beyond `NSBitmapImageRep::kBytesMax`.
Ref<NSBitmapImageRep> bitmapFromPNG(const NSData& file, std::string* error);

}  // namespace qz
