#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// A title to render.
struct Title {
    /// From 1, in the order of the file.
    uint32_t index = 0;
    /// Seconds; none for a title without times.
    std::optional<double> start;
    std::optional<double> end;
    Ref<QzMutableAnnoString> text;
};

/// The titles of a caption file, a text file or an archive of annotated strings, by the ending of its name. None, with
/// an error reported, when the file cannot be read; `hasUnknownClass` receives whether the file names a class or an
/// annotation that the palette lacks.
std::optional<std::vector<Title>> readTitles(const std::string& path, const Ref<QzAnnoPalette>& palette,
                                             Diagnostics& diagnostics, bool& hasUnknownClass);

/// One title of a text in UTF-8.
std::vector<Title> titleOfText(const std::string& text);

}  // namespace qz::tool
