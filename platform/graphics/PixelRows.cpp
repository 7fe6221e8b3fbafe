#include "platform/graphics/PixelRows.h"

namespace qz {

#ifdef QZANNO_HAS_WIDE_ROWS
extern const PixelRows kWideRows;
#endif
extern const PixelRows kBaselineRows;

std::vector<const PixelRows*> pixelRowsOfThisMachine() {
    std::vector<const PixelRows*> rows = {&kBaselineRows};
#ifdef QZANNO_HAS_WIDE_ROWS
    if (__builtin_cpu_supports("avx2")) rows.push_back(&kWideRows);
#endif
    return rows;
}

const PixelRows& pixelRows() {
    static const PixelRows& best = *pixelRowsOfThisMachine().back();
    return best;
}

}  // namespace qz
