#pragma once

#include <string>

#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"

namespace qz {

/// Encodes a premultiplied RGBA bitmap as a PNG file, 8-bit RGBA with straight alpha. Returns null for any other
/// bitmap.
Ref<NSData> pngFromBitmap(const NSBitmapImageRep& bitmap);

/// Decodes any kind of PNG file to a premultiplied RGBA bitmap. Returns null, with the reason in `error`, if the file
/// is damaged or not a PNG, or if its pixels exceed `NSBitmapImageRep::kBytesMax`.
Ref<NSBitmapImageRep> bitmapFromPNG(const NSData& file, std::string* error);

}  // namespace qz
