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

/// Puts cues where they ask to stand, by annotations on top of a palette, one for each distinct place; so the palette
/// is changed, and must be the caller's own.
///
/// What a cue leaves out stays as the palette says. Where it gives a row or a line, the text is placed between the top
/// and bottom margins of the palette's global annotation, which keep it on the safe part of the screen; per cents are
/// of the whole screen. docs/captions.md has the table. Used on one thread.
class PlacementAnnos {
public:
    /// The screen in points. `direction`, unless it is natural, is that of every text.
    PlacementAnnos(Ref<QzAnnoPalette> palette, NSSize screen, NSWritingDirection direction);

    /// Lays the placement's annotation over the whole text, whose other annotations are in place already.
    void place(const CuePlacement& placement, QzMutableAnnoString& text);

private:
    /// What an annotation says.
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
