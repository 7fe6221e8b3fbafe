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

// What the handles of the interface are. Objects that threads share hold values and bytes alone, since the library's
// own objects may be used by one thread only; whoever needs a palette object makes one from the bytes.

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
        /// What a caption file says that the annotation looks like; null for those of palettes.
        std::shared_ptr<const qz::CaptionLook> look = {};
    };

    std::string text;
    qz::c::TextPositions positions;
    std::vector<Span> spans;
    qz::CuePlacement placement;
};

namespace qz::c {

/// A palette of the caller's own. The file was read before, so it can be read again.
Ref<QzAnnoPalette> newPalette(const Ref<NSData>& file);

}  // namespace qz::c
