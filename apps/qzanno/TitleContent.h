#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "apps/qzanno/Sha256.h"
#include "apps/qzanno/TitleReader.h"
#include "captions/CaptionLooks.h"

namespace qz::tool {

/// The content of a title, independent of a palette object: annotations are priorities, or looks of a file. So it can
/// be passed to a thread with its own copy of the palette.
struct TitleContent {
    struct Span {
        /// The priority of an annotation of the palette.
        int32_t priority;
        Range range;
        /// The look of an annotation defined by a file; the priority is then meaningless.
        std::shared_ptr<const CaptionLook> look = {};
    };

    std::u16string text;
    /// The spans of each annotation, sorted by priority, then by the names of looks.
    std::vector<Span> spans;
    CuePlacement placement;
};

/// The content of a title read with these looks. Keys that are not the palette's have no effect and are left out.
TitleContent contentOf(const Title& title, const CaptionLooks& looks);

/// The reverse, with looks of the same palette; adds those of the content to it.
Ref<QzMutableAnnoString> annotatedString(const TitleContent& content, CaptionLooks& looks);

/// Adds everything that distinguishes two contents.
void addContent(Sha256& hash, const TitleContent& content);

}  // namespace qz::tool
