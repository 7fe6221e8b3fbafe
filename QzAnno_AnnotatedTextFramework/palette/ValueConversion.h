#pragma once

/// @file
/// Attribute values in a property list. Colours and box appearances become dictionaries with a form tag under
/// `safeObjectName`: "NSColor Named" with "CatalogName" and "ColorName", or "NSColor RGBCalibrated" with "Red",
/// "Green", "Blue" and "Alpha" from 0 to 1; a box appearance is its colour's dictionary with `BBOXSTART` before the
/// tag, and its type under "bbtype".

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

class NSColor;
class QzBBoxInfo;

/// The key of the form tag.
inline const Ref<NSString> safeObjectName = "Object Name"_ns;
/// The prefix of a box appearance's tag, followed by that of its colour.
inline const Ref<NSString> BBOXSTART = "BBox with "_ns;

/// The value's form in a property list: the value itself if a list can hold it (without checking the elements of arrays
/// and dictionaries), a dictionary for colours and box appearances, null for anything else.
Ref<NSObject> dehydrate(const Ref<NSObject>& value);
/// The colour or box appearance that the dictionary represents, or else the dictionary itself.
Ref<NSObject> rehydrate(const Ref<NSDictionary>& dictionary);

/// The dictionary of a colour, with 0 for every component if it has no calibrated RGB form; null for any other value.
Ref<NSDictionary> safeColor(const NSObject& value);
/// The colour that the dictionary represents, with 0 for missing components; null if it is not a colour.
Ref<NSColor> genColor(const NSDictionary& dictionary);
/// The dictionary of a box appearance; null for any other value.
Ref<NSDictionary> safeBGBox(const NSObject& value);
/// The box appearance that the dictionary represents, with 0 for a missing type; null if it is not a box appearance.
Ref<QzBBoxInfo> genBGBox(const NSDictionary& dictionary);

}  // namespace qz
