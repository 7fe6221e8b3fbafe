#pragma once

#include <string_view>

#include "platform/text/NSFont.h"

namespace qz {

/// A font at the size of `font` that covers the text, a cluster or a stretch of them, as `NSFont::coversText` has it:
/// `font` itself when it does, else one chosen by Fontconfig with the look of `font` in mind. Where no font covers all
/// of it, the first one that covers its first character, else `font`. `language` is a BCP 47 tag; without one the
/// characters of the text speak for one, and Han that says nothing is taken for Japanese. The answer for the same face,
/// text and language is remembered. May be used from several threads.
Ref<NSFont> fontForText(const Ref<NSFont>& font, std::u16string_view text, std::string_view language = {});

}  // namespace qz
