#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionLook.h"

namespace qz::composer {

/// What a caption file holds for a title besides text and times, kept for saving (see CaptionFile.h).
struct CueSource {
    std::string identifier;
    std::string settings;
    std::string payload;
    std::string preamble;
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

/// The titles of a WebVTT (.vtt) or SubRip (.srt) file, a script (.ass, .ssa), a text file (.txt) or an archive of
/// annotated strings (.annostring). Each name missing from the palette gets an unbound key. Returns no value, with one
/// line that names the file in `error`, if it cannot be read.
std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error);

struct WrittenTitles {
    Ref<NSData> file;
    /// What the file cannot hold of the titles, one line each.
    std::vector<std::string> losses;
};

/// The titles in the form for the path's ending: captions (.vtt), where titles without times get some, or an archive
/// (.annostring). Returns no value, with one line that names the file in `error`, if there is no such form.
std::optional<WrittenTitles> titlesAsFile(const std::string& path, const TitleFile& titles,
                                          const Ref<QzAnnoPalette>& palette, std::string& error);

/// The titles as an archive: one annotated string, or an array of them. Returns null, with the reason in `reason`, if
/// they cannot be archived.
Ref<NSData> archiveOfTitles(const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette, std::string& reason);
/// Reads such an archive, with keys as for `readTitleFile`. Warnings name annotations missing from the palette.
std::optional<TitleFile> titlesOfArchive(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                         std::string& reason);

/// The palette of a property-list file. Returns null, with one line that names the file in `error`, if it cannot be
/// read.
Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error);

}  // namespace qz::composer
