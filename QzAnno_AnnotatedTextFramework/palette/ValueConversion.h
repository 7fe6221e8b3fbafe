#pragma once

#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

namespace qz {

class NSColor;
class QzBBoxInfo;

// Attribute values in a property list. Colours and box appearances become dictionaries that carry a form tag under
// `safeObjectName`: "NSColor Named" with "CatalogName" and "ColorName", or "NSColor RGBCalibrated" with "Red", "Green",
// "Blue" and "Alpha" from 0 to 1; a box appearance is its colour's dictionary with `BBOXSTART` before the tag, and its
// type under "bbtype".

inline const Ref<NSString> safeObjectName = "Object Name"_ns;
inline const Ref<NSString> BBOXSTART = "BBox with "_ns;

/// The value's form in a property list: itself for what a list can hold (the elements of arrays and dictionaries are
/// not looked at), a dictionary for colours and box appearances, none for anything else.
Ref<NSObject> dehydrate(const Ref<NSObject>& value);
/// The colour or box appearance that the dictionary stands for; the dictionary itself when it stands for neither.
Ref<NSObject> rehydrate(const Ref<NSDictionary>& dictionary);

// Each gives none for a value, or a dictionary, that is not of its kind.

/// A colour that has no calibrated RGB form gives 0 for every component.
Ref<NSDictionary> safeColor(const NSObject& value);
/// Missing components count as 0.
Ref<NSColor> genColor(const NSDictionary& dictionary);
Ref<NSDictionary> safeBGBox(const NSObject& value);
/// A missing type counts as 0.
Ref<QzBBoxInfo> genBGBox(const NSDictionary& dictionary);

}  // namespace qz
