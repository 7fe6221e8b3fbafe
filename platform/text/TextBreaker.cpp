#include "platform/text/TextBreaker.h"

#include <memory>
#include <new>

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include "platform/text/ParagraphRange.h"

namespace qz {
namespace {

bool isHangul(UChar32 character) {
    return u_getIntPropertyValue(character, UCHAR_HANGUL_SYLLABLE_TYPE) != U_HST_NOT_APPLICABLE;
}

bool isInKoreanWord(std::u16string_view text, uint32_t boundary) {
    return isHangul(text[boundary - 1]) && isHangul(text[boundary]);
}

struct Close {
    void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};
using Iterator = std::unique_ptr<UBreakIterator, Close>;

Iterator open(UBreakIteratorType type) {
    UErrorCode status = U_ZERO_ERROR;
    Iterator iterator(ubrk_open(type, "", nullptr, 0, &status));
    if (U_FAILURE(status)) throw std::bad_alloc();
    return iterator;
}

// Opening an iterator takes longer than finding the clusters of a title.
UBreakIterator& clustersOfThread() {
    thread_local const Iterator iterator = open(UBRK_CHARACTER);
    return *iterator;
}

UBreakIterator& linesOfThread() {
    thread_local const Iterator iterator = open(UBRK_LINE);
    return *iterator;
}

template <class Visit>
void forEachBoundary(UBreakIterator& iterator, std::u16string_view text, const Visit& visit) {
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(&iterator, text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    for (int32_t i = ubrk_first(&iterator); i != UBRK_DONE; i = ubrk_next(&iterator)) visit(static_cast<uint32_t>(i));
    // The iterator outlives the text.
    ubrk_setText(&iterator, nullptr, 0, &status);
}

}  // namespace

std::vector<uint8_t> TextBreaker::clustersInText(std::u16string_view text) {
    std::vector<uint8_t> flags(text.size());
    uint32_t start = 0;
    forEachBoundary(clustersOfThread(), text, [&](uint32_t boundary) {
        while (boundary - start > kClusterUnitsMax) {
            start += kClusterUnitsMax;
            if (U16_IS_TRAIL(text[start])) --start;
            flags[start] = TextBreak::clusterStart;
        }
        start = boundary;
        if (boundary < text.size()) flags[boundary] = TextBreak::clusterStart;
    });
    return flags;
}

std::vector<uint8_t> TextBreaker::breaksInParagraph(std::u16string_view paragraph) {
    std::vector<uint8_t> flags = clustersInText(paragraph);
    forEachBoundary(linesOfThread(), paragraph, [&](uint32_t boundary) {
        if (boundary == 0 || boundary >= paragraph.size()) return;
        const bool isInCluster = !(flags[boundary] & TextBreak::clusterStart);
        if (!isInCluster && !isInKoreanWord(paragraph, boundary)) flags[boundary] |= TextBreak::lineMayBegin;
    });
    for (size_t i = 0; i < paragraph.size(); ++i) {
        if (u_isWhitespace(paragraph[i]) || paragraph[i] == 0x0085) flags[i] |= TextBreak::hangs;
        if (i > 0 && endsLine(paragraph[i - 1])) flags[i] |= TextBreak::lineMustBegin;
    }
    return flags;
}

}  // namespace qz
