#pragma once

#include <map>
#include <set>
#include <string>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "apps/qzanno-composer/TitleFile.h"
#include "captions/LooseKeys.h"

namespace qz::composer {

/// Other keys for keys of titles.
class KeyMap {
public:
    using Keys = std::map<Ref<QzAnnoKey>, Ref<QzAnnoKey>>;

    explicit KeyMap(Keys keys) : keys_(std::move(keys)) {}

    bool isEmpty() const { return keys_.empty(); }
    const Keys& keys() const { return keys_; }
    /// The way back.
    KeyMap inverted() const;
    /// The key itself when the map has no other for it.
    Ref<QzAnnoKey> operator()(const Ref<QzAnnoKey>& key) const;
    /// Equal objects stay equal, and a text without any of the keys stays the object it is.
    void takeOver(std::vector<Title>& titles);
    Ref<NSSet> takenOver(const Ref<NSSet>& keys) const;

private:
    Keys keys_;
    std::map<Ref<QzAnnoString>, Ref<QzAnnoString>> texts_;
};

/// What keys of titles become when another palette takes the place of theirs, or, with the same one twice, when it has
/// gained a name that titles have.
///
/// A key becomes the one of the same name, or, as in caption files, of the name with blanks for its "_"; of a name that
/// the other palette lacks, a loose key. Different keys stay different, so the way back gives the former ones.
KeyMap keysByName(const QzAnnoPalette& from, const QzAnnoPalette& to, LooseKeys& loose,
                  const std::set<Ref<QzAnnoKey>>& keys);

/// Whether the palette may have an annotation for the key's name; says no where `keysByName` finds none.
bool isNamedIn(const QzAnnoPalette& palette, const Ref<QzAnnoKey>& key, const LooseKeys& loose);

}  // namespace qz::composer
