#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "QzAnno/model/QzAnnoKey.h"

namespace qz {

/// Keys of names that no palette holds, so that a text keeps a name until a palette has it.
///
/// They belong to no palette and change no look. The same name gives the same key as long as this object lives.
class LooseKeys {
public:
    /// A palette may have several annotations of one name: the key of the `nth` of them, from 1.
    Ref<QzAnnoKey> keyNamed(std::string_view name, int nth = 1) {
        Ref<QzAnnoKey> key = find(name, nth);
        if (!key) {
            key = QzAnnoKey::initWithName(NSString::stringWithUTF8String(name));
            keys_[{std::string(name), nth}] = key;
        }
        return key;
    }

    /// Null until somebody has asked for the key.
    Ref<QzAnnoKey> find(std::string_view name, int nth = 1) const {
        const auto found = keys_.find({std::string(name), nth});
        if (found == keys_.end()) return {};
        // An adopted key may be back in its palette, or have got another name, since.
        const Ref<QzAnnoKey>& key = found->second;
        return !key->valid() && key->name()->utf8() == name ? key : nullptr;
    }

    /// Makes a key that texts already use the one of its name, unless there is one.
    void adopt(const Ref<QzAnnoKey>& key) {
        const std::string name = key->name()->utf8();
        const bool isOwn = std::ranges::any_of(keys_, [&](const auto& each) { return each.second == key; });
        if (!isOwn && !find(name)) keys_[{name, 1}] = key;
    }

    /// Which of its name a key is; 1 for a key of somebody else's.
    int nthOf(const QzAnnoKey& key) const {
        for (const auto& [place, each] : keys_) {
            if (each.get() == &key) return place.second;
        }
        return 1;
    }

    /// Remembers that a key of a palette was found by its name with "_" for the blanks.
    void noteSpelling(const Ref<QzAnnoKey>& key, const std::string& spelling) { spellings_[key] = spelling; }
    /// The name by which a key was found, as long as it has that name; else its own.
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
