#pragma once

/// @file
/// The names of the attributes that the library reads from annotations and attributed strings. Lengths are in points of
/// the screen unless stated otherwise. The values are part of stored palettes. Attributes with other names are passed
/// on unchanged.

#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/platform/text/NSAttributedString.h"

namespace qz {

/// String: "family-style".
inline const Ref<NSString> QzFontAttribute = "Full FontName as NSString"_ns;
/// Strings, family and style: the font if there is no full name.
///@{
inline const Ref<NSString> QzFontNameAttribute = "FontName as NSString"_ns;
inline const Ref<NSString> QzFontStyleAttribute = "FontStyle as NSString"_ns;
///@}
/// Number; the default size if not above 0.
inline const Ref<NSString> QzFontSizeAttribute = "FontSize as NSNumber(float)"_ns;
/// Numbers that count as booleans: select the bold (italic) face of the run's family (1), or the face without that
/// trait (0); without the attribute, the font's name determines the face. They are independent, so an italic word in a
/// bold line is both.
///@{
inline const Ref<NSString> QzBoldAttribute = "Bold as NSNumber(bool)"_ns;
inline const Ref<NSString> QzItalicAttribute = "Italic as NSNumber(bool)"_ns;
///@}
/// Numbers that count as booleans: a line under or through the text, with the font's own position and thickness. Layers
/// follow it.
///@{
inline const Ref<NSString> QzUnderlineAttribute = "Underline as NSNumber(bool)"_ns;
inline const Ref<NSString> QzStrikeThroughAttribute = "StrikeThrough as NSNumber(bool)"_ns;
///@}
/// Colour of the glyphs, under the text system's own name, so that it needs no conversion.
inline const Ref<NSString> QzTextColorAttribute = NSForegroundColorAttributeName;
/// Number: line spacing and paragraph spacing.
inline const Ref<NSString> QzLeadingAttribute = "Leading as NSNumber(float)"_ns;
/// Number: a value of `NSTextAlignment`.
inline const Ref<NSString> QzHorizontalAlignmentAttribute = "Horizontal Alignment as NSNumber(int)"_ns;

// The frame attributes: uniform over a text, read from the global annotation and annotations that cover the whole text.

/// Number: 0 top, 1 centre, 2 bottom.
inline const Ref<NSString> QzVerticalAlignmentAttribute = "Vertical Alignment as NSNumber(int) enumeration"_ns;
/// Array of four numbers; takes precedence over the bounding box.
inline const Ref<NSString> QzBoundingMarginsAttribute =
    "BoundingMargins as NSArray of Numbers left,right,top,bottom"_ns;
/// String "{{x, y}, {width, height}}", in fractions of the screen.
inline const Ref<NSString> QzBoundingBoxAttribute = "BoundingBox as NSRect"_ns;
/// `QzBBoxInfo`.
inline const Ref<NSString> QzTextBoundingBoxAppearanceAttribute = "QzTextBoundingBoxAppearance as QzBBoxInfo"_ns;

/// Layer 1 is beneath the glyphs, layer 2 beneath layer 1; a layer without a colour is not drawn. Offset: string "{x,
/// y}", x to the right, y downward. Width: number, the full width of the stroke along the glyphs' outlines.
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
