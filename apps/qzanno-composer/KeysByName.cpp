#include "apps/qzanno-composer/KeysByName.h"

#include <algorithm>
#include <set>

#include "captions/CueAnnotator.h"
#include "captions/KeyExchange.h"

namespace qz::composer {
namespace {

/// The key's number, from 1, among the palette's annotations of its name; 0 if the palette does not have the key.
int placeAmongNamesakes(const QzAnnoPalette& palette, const QzAnnoKey& key) {
    int place = 0;
    for (int32_t priority = 1; priority <= palette.maxPriority(); ++priority) {
        const Ref<QzAnnoKey> each = palette.annoKeyAtPriority(priority);
        place += areEqual(each->name(), key.name()) ? 1 : 0;
        if (each.get() == &key) return place;
    }
    return 0;
}

Ref<QzAnnoKey> nthNamed(const QzAnnoPalette& palette, const Ref<NSString>& name, int nth) {
    for (int32_t priority = 1; priority <= palette.maxPriority(); ++priority) {
        const Ref<QzAnnoKey> each = palette.annoKeyAtPriority(priority);
        if (areEqual(each->name(), name) && --nth == 0) return each;
    }
    return {};
}

class Finder {
public:
    Finder(const QzAnnoPalette& from, const QzAnnoPalette& to, LooseKeys& loose)
        : from_(from), to_(to), loose_(loose) {}

    KeyMap keysFor(const std::set<Ref<QzAnnoKey>>& used) {
        for (const Ref<QzAnnoKey>& key : used) ++namesInUse_[key->name()->utf8()];
        KeyMap::Keys keys;
        for (const Ref<QzAnnoKey>& key : used) {
            Ref<QzAnnoKey> becomes = found(key);
            if (!becomes) becomes = kept(key);
            if (becomes != key) keys.emplace(key, becomes);
        }
        return KeyMap(std::move(keys));
    }

private:
    Ref<QzAnnoKey> found(const Ref<QzAnnoKey>& key) const {
        if (from_.lookupPrio(key) == 0) return to_.annoKeyAtPriority(0);
        const std::string name = loose_.spellingOf(key);
        const int nth = placeOf(key, name);
        if (const auto namesake = nthNamed(to_, NSString::stringWithUTF8String(name), nth)) return namesake;
        Ref<QzAnnoKey> spelled = nth == 1 ? CueAnnotator::find({CueSpan::styleClass, name, {}, 0}, to_) : nullptr;
        if (!spelled || spelled->isDefault()) return {};
        spelled = nthNamed(to_, spelled->name(), 1);
        // Another key in use has exactly that name.
        const auto namesakes = namesInUse_.find(spelled->name()->utf8());
        const int own = areEqual(spelled->name(), key->name()) ? 1 : 0;
        if (namesakes != namesInUse_.end() && namesakes->second > own) return {};
        loose_.noteSpelling(spelled, name);
        return spelled;
    }

    Ref<QzAnnoKey> kept(const Ref<QzAnnoKey>& key) const {
        if (from_.contains(key)) {
            const std::string name = loose_.spellingOf(key);
            return loose_.keyNamed(name, placeOf(key, name));
        }
        loose_.adopt(key);
        return key;
    }

    /// The key's number among those of its name.
    int placeOf(const Ref<QzAnnoKey>& key, const std::string& name) const {
        const bool isSpelled = key->name()->utf8() != name;
        const int place = isSpelled ? 1 : placeAmongNamesakes(from_, *key);
        return place > 0 ? place : loose_.nthOf(*key);
    }

    const QzAnnoPalette& from_;
    const QzAnnoPalette& to_;
    LooseKeys& loose_;
    // The number of keys for each name.
    std::map<std::string, int> namesInUse_;
};

}  // namespace

KeyMap KeyMap::inverted() const {
    Keys keys;
    for (const auto& [key, becomes] : keys_) keys.emplace(becomes, key);
    return KeyMap(std::move(keys));
}

Ref<QzAnnoKey> KeyMap::operator()(const Ref<QzAnnoKey>& key) const {
    const auto known = keys_.find(key);
    return known == keys_.end() ? key : known->second;
}

void KeyMap::takeOver(std::vector<Title>& titles) {
    if (isEmpty()) return;
    for (Title& title : titles) {
        const bool keepsAll = std::ranges::none_of(title.text->allKeys()->objects<QzAnnoKey>(),
                                                   [&](const auto& key) { return keys_.contains(key); });
        if (keepsAll) continue;
        Ref<QzAnnoString>& text = texts_[title.text];
        if (!text) text = withKeys(*title.text, [&](const Ref<QzAnnoKey>& key) { return (*this)(key); });
        title.text = text;
    }
}

Ref<NSSet> KeyMap::takenOver(const Ref<NSSet>& keys) const {
    std::vector<Ref<NSObject>> others;
    for (const Ref<QzAnnoKey>& key : keys->objects<QzAnnoKey>()) others.push_back((*this)(key));
    return NSSet::setWithObjects(others);
}

KeyMap keysByName(const QzAnnoPalette& from, const QzAnnoPalette& to, LooseKeys& loose,
                  const std::set<Ref<QzAnnoKey>>& keys) {
    return Finder(from, to, loose).keysFor(keys);
}

bool isNamedIn(const QzAnnoPalette& palette, const Ref<QzAnnoKey>& key, const LooseKeys& loose) {
    return CueAnnotator::find({CueSpan::styleClass, loose.spellingOf(key), {}, 0}, palette) != nullptr;
}

}  // namespace qz::composer
