#pragma once

#include <functional>
#include <optional>
#include <string>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "apps/qzanno/Diagnostics.h"
#include "captions/CaptionFile.h"
#include "captions/CaptionLooks.h"

namespace qz::tool {

/// A title to render.
struct Title {
    /// From 1, in the order of the file. Cues that hold nothing to show are left out and keep their index.
    uint32_t index = 0;
    /// Seconds; empty for a title without times.
    std::optional<double> start;
    std::optional<double> end;
    CuePlacement placement;
    Ref<QzMutableAnnoString> text;
};

using TitleSink = std::function<void(Title&&)>;

/// Hands over the titles of a caption file, a text file or an archive of annotated strings, by the ending of its name,
/// one by one; the looks receive those that the file defines. False, with an error reported and no title handed over,
/// when the file cannot be read. `hasLosses` receives whether the file asks for something that titles do not show, an
/// annotation that the palette does not have included.
bool readTitles(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const TitleSink& sink,
                bool& hasLosses);

/// The same with all that the file says of a title.
bool readCues(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const CueSink& sink,
              bool& hasLosses);

/// The one title of a text in UTF-8.
Title titleOfText(const std::string& text);

}  // namespace qz::tool
