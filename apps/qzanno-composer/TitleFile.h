#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "captions/CaptionLook.h"
#include "captions/CuePlacement.h"

namespace qz::composer {

/// What a caption file holds for a title besides text and times, kept for saving (see CaptionFile.h).
struct CueSource {
    std::string identifier;
    std::string settings;
    std::string payload;
    std::string preamble;
    CuePlacement placement = {};
};

/// A title with its start and end, in seconds; no values for a text without times.
struct Title {
    Ref<QzAnnoString> text;
    std::optional<double> start;
    std::optional<double> end;
    std::shared_ptr<const CueSource> source = {};
};

struct TitleFile {
    /// At least one.
    std::vector<Title> titles;
    // For caption files: the text before the first title and after the last.
    std::string header = {};
    std::string trailer = {};
    /// The looks of the file's own annotations that the palette does not have.
    std::vector<std::shared_ptr<const CaptionLook>> looks = {};
    /// Problems found, one line each with its place.
    std::vector<std::string> warnings = {};
};

/// The titles of a file in any of the formats (see captions/Format.h). Each name missing from the palette gets an
/// unbound key. Returns no value, with one line that names the file in `error`, if it cannot be read.
std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error);

struct WrittenTitles {
    Ref<NSData> file;
    /// What the file cannot hold of the titles, one line each.
    std::vector<std::string> losses;
};

/// The titles in the form for the path's ending; in captions, titles without times get some. The screen is in points.
/// Returns no value, with one line that names the file in `error`, if there is no such form.
std::optional<WrittenTitles> titlesAsFile(const std::string& path, TitleFile titles, const Ref<QzAnnoPalette>& palette,
                                          NSSize screen, std::string& error);

/// The palette of a property-list file. Returns null, with one line that names the file in `error`, if it cannot be
/// read.
Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error);

}  // namespace qz::composer
