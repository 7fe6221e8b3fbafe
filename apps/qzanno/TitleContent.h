#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "apps/qzanno/Sha256.h"
#include "apps/qzanno/TitleReader.h"
#include "captions/CaptionLooks.h"

namespace qz::tool {

/// What a title shows, without ties to a palette object: annotations are priorities, or looks of a file. So it can go
/// to a thread that has the same palette as an object of its own.
struct TitleContent {
    struct Span {
        /// Of an annotation of the palette's own.
        int32_t priority;
        Range range;
        /// Of one that a file defines; the priority then means nothing.
        std::shared_ptr<const CaptionLook> look = {};
    };

    std::u16string text;
    /// Of each annotation, in the order of priorities, then of the names of looks.
    std::vector<Span> spans;
    CuePlacement placement;
};

/// Of a title that was read with these looks. Keys that are not the palette's show nothing and are left out.
TitleContent contentOf(const Title& title, const CaptionLooks& looks);

/// The way back, with looks of the same palette; those of the content are added to it.
Ref<QzMutableAnnoString> annotatedString(const TitleContent& content, CaptionLooks& looks);

/// Adds all that makes two contents different.
void addContent(Sha256& hash, const TitleContent& content);

}  // namespace qz::tool
