#pragma once

#include <map>
#include <string>
#include <string_view>

#include "QzAnno_AnnotatedTextFramework/model/QzAnnoKey.h"

namespace qz {

/// Keys of names that no palette holds, one for each name, so that a text keeps a name until a palette has it.
///
/// They belong to no palette and change no look. The same name gives the same key as long as this object lives.
class LooseKeys {
public:
    Ref<QzAnnoKey> keyNamed(std::string_view name) {
        Ref<QzAnnoKey>& key = keys_[std::string(name)];
        if (!key) key = QzAnnoKey::initWithName(NSString::stringWithUTF8String(name));
        return key;
    }

private:
    std::map<std::string, Ref<QzAnnoKey>> keys_;
};

}  // namespace qz
