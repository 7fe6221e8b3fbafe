#pragma once

#include <map>
#include <optional>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "captions/CuePlacement.h"

namespace qz {

/// Places cues by annotations on top of a palette, one for each distinct placement. Changes the palette, which must be
/// the caller's own.
///
/// Anything that a cue leaves out stays as in the palette. Rows and lines are between the top and bottom margins of the
/// palette's global annotation, which keep text in the safe area; per cents refer to the whole screen. See the table in
/// docs/captions.md. For one thread.
class PlacementAnnos {
public:
    /// The screen in points. `direction`, unless it is natural, is that of every text.
    PlacementAnnos(Ref<QzAnnoPalette> palette, NSSize screen, NSWritingDirection direction);

    /// Adds the placement's annotation to the whole text, which must have its other annotations already.
    void place(const CuePlacement& placement, QzMutableAnnoString& text);

private:
    /// The contents of an annotation.
    struct Place {
        std::optional<Margins> margins;
        std::optional<VerticalAlignment> row;
        std::optional<NSTextAlignment> alignment;
        friend auto operator<=>(const Place&, const Place&) = default;
    };

    Place placeOf(const CuePlacement& placement, const QzMutableAnnoString& text) const;
    void placeColumn(const CuePlacement& placement, NSTextAlignment alignment, Margins& margins) const;
    void placeLine(const CuePlacement::Line& line, double textHeight, double lineHeight, const Margins& safe,
                   Margins& margins, Place& place) const;
    bool isRightToLeft(const QzMutableAnnoString& text) const;
    Ref<QzAnnoKey> keyOf(const Place& place);

    const Ref<QzAnnoPalette> palette_;
    const NSSize screen_;
    const NSWritingDirection direction_;
    std::map<Place, Ref<QzAnnoKey>> keys_;
};

}  // namespace qz
