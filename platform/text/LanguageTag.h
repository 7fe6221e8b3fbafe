#pragma once

#include <string_view>

namespace qz {

/// Whether the text is a well-formed BCP 47 language tag, such as "ja", "sr-Latn" or "zh-Hant-HK".
bool isLanguageTag(std::string_view text);

}  // namespace qz
