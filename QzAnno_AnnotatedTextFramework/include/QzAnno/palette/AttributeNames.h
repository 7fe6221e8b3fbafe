#pragma once

/// @file
/// The names under which annotations and attributed strings hold what the library reads. Lengths are in points of the
/// screen unless a line says otherwise. The values are part of stored palettes. Names that nothing here knows are
/// passed on as they are.

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

/// String: "family-style".
inline const Ref<NSString> QzFontAttribute = "Full FontName as NSString"_ns;
/// Strings, family and style: the font where there is no full name.
///@{
inline const Ref<NSString> QzFontNameAttribute = "FontName as NSString"_ns;
inline const Ref<NSString> QzFontStyleAttribute = "FontStyle as NSString"_ns;
///@}
/// Number; not above 0: the default size.
inline const Ref<NSString> QzFontSizeAttribute = "FontSize as NSNumber(float)"_ns;
/// Numbers that count as booleans. Each asks for the bold or the italic face of the run's own family (1), or for the
/// face without that trait (0); without the attribute the face is the one that the font's name says. They are
/// attributes of their own so that an italic word in a bold line is both.
///@{
inline const Ref<NSString> QzBoldAttribute = "Bold as NSNumber(bool)"_ns;
inline const Ref<NSString> QzItalicAttribute = "Italic as NSNumber(bool)"_ns;
///@}
/// Numbers that count as booleans: a line below the text or through it, where the font puts it and as thick as the font
/// says. Layers follow it.
///@{
inline const Ref<NSString> QzUnderlineAttribute = "Underline as NSNumber(bool)"_ns;
inline const Ref<NSString> QzStrikeThroughAttribute = "StrikeThrough as NSNumber(bool)"_ns;
///@}
/// Colour of the glyphs, under the platform's own name, so that the text system draws it without a conversion.
inline const Ref<NSString> QzTextColorAttribute = NSForegroundColorAttributeName;
/// Number: both line spacing and paragraph spacing.
inline const Ref<NSString> QzLeadingAttribute = "Leading as NSNumber(float)"_ns;
/// Number: a value of `NSTextAlignment`.
inline const Ref<NSString> QzHorizontalAlignmentAttribute = "Horizontal Alignment as NSNumber(int)"_ns;

// The frame attributes: uniform over a text, read from the global annotation and the annotations that cover all of it.

/// Number: 0 top, 1 centre, 2 bottom.
inline const Ref<NSString> QzVerticalAlignmentAttribute = "Vertical Alignment as NSNumber(int) enumeration"_ns;
/// Array of four numbers; wins over the bounding box.
inline const Ref<NSString> QzBoundingMarginsAttribute =
    "BoundingMargins as NSArray of Numbers left,right,top,bottom"_ns;
/// String "{{x, y}, {width, height}}", in fractions of the screen.
inline const Ref<NSString> QzBoundingBoxAttribute = "BoundingBox as NSRect"_ns;
/// `QzBBoxInfo`.
inline const Ref<NSString> QzTextBoundingBoxAppearanceAttribute = "QzTextBoundingBoxAppearance as QzBBoxInfo"_ns;

/// Layer 1 lies beneath the glyphs, layer 2 beneath layer 1; one without a colour is not drawn. Offset: string
/// "{x, y}", x to the right, y downward. Width: number, the whole width of the stroke around the glyphs' outlines.
///@{
inline const Ref<NSString> QzBackgroundColorAttribute = "BackgroundColor as NSColor"_ns;
inline const Ref<NSString> QzBackgroundOffsetAttribute = "BackgroundOffset as NSPoint"_ns;
inline const Ref<NSString> QzBackgroundWidthAttribute = "BackgroundWidth as NSNumber"_ns;
inline const Ref<NSString> QzBackground2ColorAttribute = "Background2Color as NSColor"_ns;
inline const Ref<NSString> QzBackground2OffsetAttribute = "Background2Offset as NSPoint"_ns;
inline const Ref<NSString> QzBackground2WidthAttribute = "Background2Width as NSNumber"_ns;
///@}

/// Set of `QzAnnoKey`: the annotations that cover the whole text. (`QzAnnoAttributeName` holds those of one run.)
inline const Ref<NSString> QzFrameAnnoAttributeName = "QzFrameAnnoList"_ns;

/// The key of an annotation's name among its attributes in a palette's property list.
inline const Ref<NSString> QzAnnoPalette_AnnotationNameKey = "__Annotation Name"_ns;

}  // namespace qz
