#include <memory>
#include <new>

#include <unicode/ubidi.h>

#include "platform/text/Paragraph.h"

namespace qz {
namespace {

struct CloseBidi {
    void operator()(UBiDi* bidi) const { ubidi_close(bidi); }
};

UBiDiLevel paragraphLevel(NSWritingDirection direction) {
    switch (direction) {
        case NSWritingDirection::leftToRight:
            return UBIDI_LTR;
        case NSWritingDirection::rightToLeft:
            return UBIDI_RTL;
        default:
            return UBIDI_DEFAULT_LTR;
    }
}

}  // namespace

std::vector<uint8_t> bidiLevels(std::u16string_view paragraph, NSWritingDirection baseDirection, uint8_t& baseLevel) {
    const std::unique_ptr<UBiDi, CloseBidi> bidi(ubidi_open());
    if (!bidi) throw std::bad_alloc();
    UErrorCode status = U_ZERO_ERROR;
    ubidi_setPara(bidi.get(), paragraph.data(), static_cast<int32_t>(paragraph.size()), paragraphLevel(baseDirection),
                  nullptr, &status);
    const UBiDiLevel* levels = ubidi_getLevels(bidi.get(), &status);
    if (U_FAILURE(status)) throw std::bad_alloc();
    baseLevel = ubidi_getParaLevel(bidi.get());
    return {levels, levels + paragraph.size()};
}

std::vector<size_t> visualOrder(const std::vector<uint8_t>& levels) {
    std::vector<int32_t> order(levels.size());
    ubidi_reorderVisual(levels.data(), static_cast<int32_t>(levels.size()), order.data());
    return {order.begin(), order.end()};
}

}  // namespace qz
