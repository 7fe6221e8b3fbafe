#include "platform/graphics/PixelRows.h"

namespace qz {

const PixelRows& pixelRows() {
#ifdef QZANNO_HAS_WIDE_ROWS
    static const PixelRows& rows = __builtin_cpu_supports("avx2") ? kWideRows : kBaselineRows;
    return rows;
#else
    return kBaselineRows;
#endif
}

}  // namespace qz
