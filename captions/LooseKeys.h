#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "QzAnno/model/QzAnnoKey.h"

namespace qz {

/// Keys for names that are in no palette, so that a text keeps a name until a palette has it.
///
/// They are unbound and do not affect looks. The same name gives the same key as long as this object lives.
class LooseKeys {
public:
    /// The key for a name; since a palette may have several annotations of one name, for the `nth` of them, from 1.
    Ref<QzAnnoKey> keyNamed(std::string_view name, int nth = 1) {
        Ref<QzAnnoKey> key = find(name, nth);
        if (!key) {
            key = QzAnnoKey::initWithName(NSString::stringWithUTF8String(name));
            keys_[{std::string(name), nth}] = key;
        }
        return key;
    }

    /// Null until the key has been requested.
    Ref<QzAnnoKey> find(std::string_view name, int nth = 1) const {
        const auto found = keys_.find({std::string(name), nth});
        if (found == keys_.end()) return {};
        // An adopted key may have returned to its palette or been renamed since.
        const Ref<QzAnnoKey>& key = found->second;
        return !key->valid() && key->name()->utf8() == name ? key : nullptr;
    }

    /// Uses a key that texts already have for its name, unless there is one already.
    void adopt(const Ref<QzAnnoKey>& key) {
        const std::string name = key->name()->utf8();
        const bool isOwn = std::ranges::any_of(keys_, [&](const auto& each) { return each.second == key; });
        if (!isOwn && !find(name)) keys_[{name, 1}] = key;
    }

    /// The key's number among those of its name; 1 for a foreign key.
    int nthOf(const QzAnnoKey& key) const {
        for (const auto& [place, each] : keys_) {
            if (each.get() == &key) return place.second;
        }
        return 1;
    }

    /// Records that a palette's key was found by its name with "_" for blanks.
    void noteSpelling(const Ref<QzAnnoKey>& key, const std::string& spelling) { spellings_[key] = spelling; }
    /// The spelling by which a key was found, unless it has been renamed; else its name.
    std::string spellingOf(const Ref<QzAnnoKey>& key) const {
        const std::string name = key->name()->utf8();
        const auto found = spellings_.find(key);
        std::string spelling = name;
        std::ranges::replace(spelling, ' ', '_');
        return found != spellings_.end() && found->second == spelling ? spelling : name;
    }

private:
    std::map<std::pair<std::string, int>, Ref<QzAnnoKey>> keys_;
    std::map<Ref<QzAnnoKey>, std::string> spellings_;
};

}  // namespace qz
