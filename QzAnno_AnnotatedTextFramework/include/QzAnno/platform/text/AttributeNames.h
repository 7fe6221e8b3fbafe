#pragma once

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// The names under which attributed strings hold what the text system reads. The values are part of stored palettes.
inline const Ref<NSString> NSFontAttributeName = "NSFont"_ns;                      ///< `NSFont`
inline const Ref<NSString> NSForegroundColorAttributeName = "NSColor"_ns;          ///< `NSColor`; black without it
inline const Ref<NSString> NSParagraphStyleAttributeName = "NSParagraphStyle"_ns;  ///< `NSParagraphStyle`
inline const Ref<NSString> NSKernAttributeName = "NSKern"_ns;  ///< number: points added to each advance
inline const Ref<NSString> NSObliquenessAttributeName =
    "NSObliqueness"_ns;  ///< number: shear to the right, per unit of height
inline const Ref<NSString> NSBaselineOffsetAttributeName = "NSBaselineOffset"_ns;  ///< number: points upward
/// `NSFont`: the font that was asked for where another serves, because it lacks the characters. Set by the text
/// storage.
inline const Ref<NSString> NSOriginalFontAttributeName = "NSOriginalFont"_ns;
/// String: the language of the text as a BCP 47 tag. It tells which fonts serve characters that the font asked for
/// lacks, and how a font shapes its letters.
inline const Ref<NSString> NSLanguageAttributeName = "NSLanguage"_ns;

}  // namespace qz
