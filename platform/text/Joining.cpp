#include "platform/text/Joining.h"

#include <unicode/uchar.h>
#include <unicode/utf16.h>

namespace qz {
namespace {

int32_t joiningType(UChar32 character) {
    return u_getIntPropertyValue(character, UCHAR_JOINING_TYPE);
}

}  // namespace

// In Unicode's joining types, "left" is the side of the following letter.
bool isJoined(std::u16string_view text, size_t position) {
    int32_t before = U_JT_NON_JOINING, behind = U_JT_NON_JOINING;
    for (size_t i = position; i > 0;) {
        UChar32 character;
        U16_PREV(text.data(), 0, i, character);
        before = joiningType(character);
        if (before != U_JT_TRANSPARENT) break;
    }
    if (before != U_JT_DUAL_JOINING && before != U_JT_LEFT_JOINING && before != U_JT_JOIN_CAUSING) return false;
    for (size_t i = position; i < text.size();) {
        UChar32 character;
        U16_NEXT(text.data(), i, text.size(), character);
        behind = joiningType(character);
        if (behind != U_JT_TRANSPARENT) break;
    }
    return behind == U_JT_DUAL_JOINING || behind == U_JT_RIGHT_JOINING || behind == U_JT_JOIN_CAUSING;
}

}  // namespace qz
