#pragma once

#include <map>
#include <set>
#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "apps/qzanno-composer/TitleFile.h"
#include "captions/LooseKeys.h"

namespace qz::composer {

/// Maps keys of titles to other keys.
class KeyMap {
public:
    using Keys = std::map<Ref<QzAnnoKey>, Ref<QzAnnoKey>>;

    explicit KeyMap(Keys keys) : keys_(std::move(keys)) {}

    bool isEmpty() const { return keys_.empty(); }
    const Keys& keys() const { return keys_; }
    /// The reverse map.
    KeyMap inverted() const;
    /// Returns the key itself if the map has no other for it.
    Ref<QzAnnoKey> operator()(const Ref<QzAnnoKey>& key) const;
    /// Replaces the keys in the titles. Equal objects stay equal, and a text without any of the keys stays the same
    /// object.
    void takeOver(std::vector<Title>& titles);
    Ref<NSSet> takenOver(const Ref<NSSet>& keys) const;

private:
    Keys keys_;
    std::map<Ref<QzAnnoString>, Ref<QzAnnoString>> texts_;
};

/// Maps keys of titles to those of another palette that replaces theirs or, with the same palette twice, to those of
/// names that it has gained.
///
/// A key maps to the key of the same name or, as in caption files, of the name with blanks for "_"; if the other
/// palette does not have the name, to a loose key. Different keys stay different, so the reverse map restores the
/// former ones.
KeyMap keysByName(const QzAnnoPalette& from, const QzAnnoPalette& to, LooseKeys& loose,
                  const std::set<Ref<QzAnnoKey>>& keys);

/// Whether the palette may have an annotation for the key's name; false whenever `keysByName` finds none.
bool isNamedIn(const QzAnnoPalette& palette, const Ref<QzAnnoKey>& key, const LooseKeys& loose);

}  // namespace qz::composer
