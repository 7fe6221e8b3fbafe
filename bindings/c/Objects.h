#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "bindings/c/TextPositions.h"
#include "bindings/c/qzanno.h"
#include "captions/CaptionLook.h"
#include "captions/CuePlacement.h"

// The objects behind the interface's handles. Those that threads may share hold only values and bytes, since the
// library's own objects may be used by one thread only; code that needs a palette object makes one from the bytes.

struct qzanno_palette {
    qz::Ref<qz::NSData> file;
    std::vector<std::string> names;
};

struct qzanno_fonts {
    std::shared_ptr<qz::FontLibrary> library;
    std::vector<std::string> problems;
};

struct qzanno_title {
    struct Span {
        std::string annotation;
        qz::c::TextPositions::Bytes bytes;
        /// The annotation's look in a caption file; null for annotations of palettes.
        std::shared_ptr<const qz::CaptionLook> look = {};
    };

    std::string text;
    qz::c::TextPositions positions;
    std::vector<Span> spans;
    qz::CuePlacement placement;
};

namespace qz::c {

/// A new palette for the caller. The file has been read before, so reading it cannot fail.
Ref<QzAnnoPalette> newPalette(const Ref<NSData>& file, const std::shared_ptr<FontLibrary>& fonts = {});

}  // namespace qz::c
