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
    /// Counts from 1 in file order. Cues with nothing to show are left out, but counted.
    uint32_t index = 0;
    /// In seconds; no value for a title without times.
    std::optional<double> start;
    std::optional<double> end;
    CuePlacement placement;
    Ref<QzMutableAnnoString> text;
};

using TitleSink = std::function<void(Title&&)>;

/// Passes on the titles of a caption file, a text file or an archive of annotated strings, depending on its ending, one
/// by one, and adds the looks defined by the file. Returns false, with an error reported and without passing any title,
/// if the file cannot be read. `hasLosses` receives whether the file uses unsupported features, including annotations
/// that the palette does not have.
bool readTitles(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const TitleSink& sink,
                bool& hasLosses);

/// The same, with everything that the file holds for a title.
bool readCues(const std::string& path, CaptionLooks& looks, Diagnostics& diagnostics, const CueSink& sink,
              bool& hasLosses);

/// A UTF-8 text as one title.
Title titleOfText(const std::string& text);

}  // namespace qz::tool
