#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "apps/qzanno/Sha256.h"
#include "apps/qzanno/TitleReader.h"

namespace qz::tool {

/// What a title shows, without ties to a palette object: annotations are priorities. So it can go to a thread that has
/// the same palette as an object of its own.
struct TitleContent {
    struct Span {
        int32_t priority;
        Range range;
    };

    std::u16string text;
    /// Of each annotation, in the order of priorities.
    std::vector<Span> spans;
    CuePlacement placement;
};

/// Keys that are not the palette's show nothing and are left out.
TitleContent contentOf(const Title& title, const QzAnnoPalette& palette);

Ref<QzMutableAnnoString> annotatedString(const TitleContent& content, const QzAnnoPalette& palette);

/// Adds all that makes two contents different.
void addContent(Sha256& hash, const TitleContent& content);

}  // namespace qz::tool
