#include "platform/text/WordBreaks.h"

#include <algorithm>
#include <memory>
#include <new>

#include <unicode/ubrk.h>

namespace qz {
namespace {

struct CloseBreaks {
    void operator()(UBreakIterator* breaks) const { ubrk_close(breaks); }
};
using Breaks = std::unique_ptr<UBreakIterator, CloseBreaks>;

Breaks wordsIn(std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    Breaks breaks(ubrk_open(UBRK_WORD, "", text.data(), static_cast<int32_t>(text.size()), &status));
    if (U_FAILURE(status)) throw std::bad_alloc();
    return breaks;
}

/// Whether the text before the boundary just found is a word.
bool isWord(UBreakIterator* breaks) {
    return ubrk_getRuleStatus(breaks) >= UBRK_WORD_NONE_LIMIT;
}

}  // namespace

Range wordAt(std::u16string_view text, uint32_t index) {
    if (text.empty()) return {};
    const Breaks breaks = wordsIn(text);
    const auto at = static_cast<int32_t>(std::min<size_t>(index, text.size() - 1));
    int32_t end = ubrk_following(breaks.get(), at);
    if (end == UBRK_DONE) end = static_cast<int32_t>(text.size());
    const int32_t start = std::max(0, ubrk_preceding(breaks.get(), end));
    return {static_cast<uint32_t>(start), static_cast<uint32_t>(end - start)};
}

uint32_t nextWordEnd(std::u16string_view text, uint32_t index) {
    const Breaks breaks = wordsIn(text);
    if (index >= text.size()) return static_cast<uint32_t>(text.size());
    for (int32_t end = ubrk_following(breaks.get(), static_cast<int32_t>(index)); end != UBRK_DONE;
         end = ubrk_next(breaks.get())) {
        if (isWord(breaks.get())) return static_cast<uint32_t>(end);
    }
    return static_cast<uint32_t>(text.size());
}

uint32_t previousWordStart(std::u16string_view text, uint32_t index) {
    const Breaks breaks = wordsIn(text);
    const auto before = static_cast<int32_t>(std::min<size_t>(index, text.size()));
    int32_t found = 0;
    int32_t start = ubrk_first(breaks.get());
    for (int32_t end = ubrk_next(breaks.get()); end != UBRK_DONE && start < before; end = ubrk_next(breaks.get())) {
        if (isWord(breaks.get())) found = start;
        start = end;
    }
    return static_cast<uint32_t>(found);
}

}  // namespace qz
