#include "platform/text/LanguageTag.h"

#include <string>

#include <unicode/uloc.h>

namespace qz {

bool isLanguageTag(std::string_view text) {
    const std::string tag(text);
    char locale[ULOC_FULLNAME_CAPACITY];
    int32_t parsed = 0;
    UErrorCode error = U_ZERO_ERROR;
    uloc_forLanguageTag(tag.c_str(), locale, sizeof locale, &parsed, &error);
    // ICU parses as much of the tag as it understands and returns the length.
    return U_SUCCESS(error) && error != U_STRING_NOT_TERMINATED_WARNING &&
           parsed == static_cast<int32_t>(text.size()) && locale[0] != '\0';
}

}  // namespace qz
