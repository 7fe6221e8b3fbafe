#pragma once

#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSGeometry.h"

namespace qz::tool {

/// A problem that makes titles hard to read.
struct ReadabilityWarning {
    std::string annotationName;
    /// One line with the value, the limit, and what to do.
    std::string message;
};

/// Checks each annotation alone over the global one, as in a title without others, on a screen of that size in points.
/// Only properties that the annotation changes are checked.
///
/// - Contrast of the letters with what surrounds them, over the picture that is worst for it: W3C WCAG 2.1, "contrast
///   ratio", success criterion 1.4.3. At least 4.5, for large text 3. What surrounds letters are the filled box and
///   the layers that show on every side of them.
/// - Height of a line: the smallest that 47 CFR 79.103 asks of caption decoders, half of a row where 15 rows fill the
///   80 per cent of the height that are CTA-708's safe title area.
/// - Margins: the safe title area of SMPTE ST 2046-1 and EBU R 95, 90 per cent of the width and of the height.
/// - Room for a line; in the global style for two, what subtitles need.
std::vector<ReadabilityWarning> readabilityOf(const QzAnnoPalette& palette, NSSize screen);

/// WCAG's contrast ratio of two relative luminances, from 1 to 21.
double contrastRatio(double luminance, double otherLuminance);

/// WCAG's relative luminance of sRGB components, from 0 to 1.
double relativeLuminance(double red, double green, double blue);

}  // namespace qz::tool
