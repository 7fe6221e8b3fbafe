#include "captions/AssOverride.h"

#include <algorithm>

#include "captions/AsciiText.h"

namespace qz {
namespace {

AssOverride overrideOf(std::string_view text) {
    // No override has a longer name.
    constexpr size_t kLettersMax = 8;
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    size_t end = !text.empty() && text[0] >= '1' && text[0] <= '4' ? 1 : 0;
    while (end < text.size() && end < kLettersMax && isLetter(text[end])) ++end;
    return {text, text.substr(0, end), trimmed(text.substr(end))};
}

}  // namespace

void forEachAssOverride(std::string_view inside, const std::function<void(const AssOverride&)>& each) {
    inside.remove_prefix(std::min(inside.find('\\'), inside.size()));
    while (!inside.empty()) {
        inside.remove_prefix(1);
        // Brackets may contain overrides: "\t(\fs20)". An unclosed bracket extends to the end.
        size_t end = inside.find_first_of("(\\");
        if (end != std::string_view::npos && inside[end] == '(') {
            end = inside.find(')', end);
            if (end != std::string_view::npos) end = inside.find('\\', end);
        }
        const std::string_view text = inside.substr(0, end);
        each(overrideOf(trimmed(text)));
        inside.remove_prefix(text.size());
    }
}

}  // namespace qz
