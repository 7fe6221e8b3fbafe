#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "captions/CaptionLook.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {

/// Which looks to use for the titles of caption files.
enum class Looks {
    house,  ///< only the palette's
    file,   ///< the file's, even for names that the palette has
    both,   ///< the palette's and, for names that it does not have, the file's
};

/// Adds the looks of caption files to a palette, with an annotation for each distinct look. Changes the palette, which
/// must be the caller's own.
///
/// A script's styles go below all of the palette's annotations except the global one, so that these can change the
/// line's style; styles that replace another inside a line go above them; all other looks go on top. For one thread.
class CaptionLooks {
public:
    /// Uses the palette's fonts, so set its font library first. `screen` is in points; lengths in scripts are scaled to
    /// it.
    CaptionLooks(Ref<QzAnnoPalette> palette, NSSize screen, Looks which = Looks::both);

    const Ref<QzAnnoPalette>& palette() const { return palette_; }
    NSSize screen() const { return screen_; }
    Looks which() const { return which_; }

    /// The annotation of a look, made on first use. Null if the palette is full.
    Ref<QzAnnoKey> keyOf(const CaptionLook& look);
    /// The look of an annotation that this object made; null for the palette's own.
    std::shared_ptr<const CaptionLook> lookOf(const Ref<QzAnnoKey>& key) const;

    /// The looks of all annotations that this object made.
    std::vector<std::shared_ptr<const CaptionLook>> all() const;

    /// The palette's own annotations: their number above the global one, and the key at an original priority.
    ///@{
    int32_t houseCount() const { return static_cast<int32_t>(house_.size()); }
    Ref<QzAnnoKey> houseKeyAt(int32_t priority) const { return house_.at(static_cast<size_t>(priority) - 1); }
    ///@}

private:
    Ref<QzAnnoKey> makeAnno(const CaptionLook& look);
    ObjectMap attributesOf(const CaptionLook& look) const;
    ObjectMap attributesOf(const CaptionLook::Style& style) const;

    const Ref<QzAnnoPalette> palette_;
    const NSSize screen_;
    const Looks which_;
    std::vector<Ref<QzAnnoKey>> house_;
    std::map<std::string, Ref<QzAnnoKey>> keys_;  // by the looks' identities
    std::unordered_map<const QzAnnoKey*, std::shared_ptr<const CaptionLook>> looks_;
    int32_t styles_ = 0;
    int32_t resets_ = 0;
};

}  // namespace qz
