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

/// Which looks the titles of caption files have.
enum class Looks {
    house,  ///< the palette's alone
    file,   ///< the file's, also where the palette has an annotation of that name
    both,   ///< the palette's, and for names that it does not have the file's
};

/// A palette and the looks of caption files in it, an annotation for each distinct one; so the palette is changed, and
/// must be the caller's own.
///
/// The styles of a script lie below all of the palette's annotations but the global one, since the line that has one is
/// to be changed by the others; those that stand in the place of another within a line lie above them; all other looks
/// lie on top. Used on one thread.
class CaptionLooks {
public:
    /// Fonts are the palette's, so it has its font library by then. The screen in points, to which lengths in scripts
    /// are scaled.
    CaptionLooks(Ref<QzAnnoPalette> palette, NSSize screen, Looks which = Looks::both);

    const Ref<QzAnnoPalette>& palette() const { return palette_; }
    NSSize screen() const { return screen_; }
    Looks which() const { return which_; }

    /// The annotation of a look, made when it is asked for first. Null if the palette is full.
    Ref<QzAnnoKey> keyOf(const CaptionLook& look);
    /// The look of an annotation that this object made; null for the palette's own.
    std::shared_ptr<const CaptionLook> lookOf(const Ref<QzAnnoKey>& key) const;

    /// Of all annotations that this object made.
    std::vector<std::shared_ptr<const CaptionLook>> all() const;

    /// The palette's own annotations: how many there are above the global one, and the key at a priority that one had
    /// before there were others.
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
