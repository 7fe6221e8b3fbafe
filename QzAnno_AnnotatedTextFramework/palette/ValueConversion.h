#pragma once

/// @file
/// Attribute values in a property list. Colours and box appearances become dictionaries that carry a form tag under
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
/// What the tag of a box appearance begins with; that of its colour follows.
inline const Ref<NSString> BBOXSTART = "BBox with "_ns;

/// The value's form in a property list: itself for what a list can hold (the elements of arrays and dictionaries are
/// not looked at), a dictionary for colours and box appearances, none for anything else.
Ref<NSObject> dehydrate(const Ref<NSObject>& value);
/// The colour or box appearance that the dictionary stands for; the dictionary itself when it stands for neither.
Ref<NSObject> rehydrate(const Ref<NSDictionary>& dictionary);

/// The dictionary of a colour, with 0 for every component when it has no calibrated RGB form; none for any other value.
Ref<NSDictionary> safeColor(const NSObject& value);
/// The colour that the dictionary stands for, missing components counting as 0; none when it stands for none.
Ref<NSColor> genColor(const NSDictionary& dictionary);
/// The dictionary of a box appearance; none for any other value.
Ref<NSDictionary> safeBGBox(const NSObject& value);
/// The box appearance that the dictionary stands for, a missing type counting as 0; none when it stands for none.
Ref<QzBBoxInfo> genBGBox(const NSDictionary& dictionary);

}  // namespace qz
