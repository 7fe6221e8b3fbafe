#pragma once

#include <string_view>

namespace qz {

/// Whether the text is a BCP 47 tag of a language, such as "ja", "sr-Latn" or "zh-Hant-HK"; whether anybody speaks it
/// is another matter.
bool isLanguageTag(std::string_view text);

}  // namespace qz
