#pragma once

#include <map>
#include <set>
#include <string>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/AssLook.h"
#include "captions/CaptionWriter.h"
#include "captions/PlacementAnnos.h"

namespace qz {

/// Writes titles as an Advanced SubStation Alpha script that looks the same as far as the format allows: a style for
/// each annotation over the global one, which is "Default", and overrides for the parts of a title that differ from its
/// style. Fonts are named by family, so players need them installed.
class AssWriter {
public:
    /// Takes the caller's own palette, which it changes, and the screen in points. `direction` as for `PlacementAnnos`.
    /// Each of the annotations `styles` becomes a style, used or not.
    AssWriter(Ref<QzAnnoPalette> palette, NSSize screen, NSWritingDirection direction,
              const std::vector<Ref<QzAnnoKey>>& styles);

    /// Seconds; the end is not before the start.
    void add(double start, double end, const CuePlacement& placement, QzMutableAnnoString& text);

    /// The script, in UTF-8 with line feeds.
    std::string script() const;
    /// Features of the titles that the script cannot hold, one line for each kind.
    const std::set<std::string>& losses() const { return losses_; }

private:
    struct Style {
        std::string name;
        /// The look of the style alone.
        AssLook look;
    };

    AssLook lookOf(const Ref<NSSet>& keys, std::set<std::string>& losses) const;
    const Style& addStyle(const Ref<NSSet>& keys, const std::string& name);
    const Style& styleFor(const Ref<NSSet>& frame);
    std::string placeOverrides(const AssLook& look, const AssLook& styled) const;

    const Ref<QzAnnoPalette> palette_;
    const NSSize screen_;
    PlacementAnnos placements_;
    // Styles by the annotations that they represent.
    std::map<std::set<Ref<QzAnnoKey>>, Style> styles_;
    std::set<std::string> names_;
    std::set<std::string> losses_;
    std::string styleLines_;
    std::string eventLines_;
};

/// Writes captions as such a script, with a style for each of the palette's own annotations. Losses are one line for
/// each kind.
std::optional<WrittenCaptions> writeAss(const CaptionFile& captions, const CaptionStage& stage, std::string& reason);

}  // namespace qz
