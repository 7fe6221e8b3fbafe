#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "captions/CaptionLook.h"

namespace qz::composer {

/// What a caption file says of a title besides text and times, for the way back (see CaptionFile.h).
struct CueSource {
    std::string identifier;
    std::string settings;
    std::string payload;
    std::string preamble;
};

/// A title of a file, with the times at which it shows, in seconds; none of a text without times.
struct Title {
    Ref<QzAnnoString> text;
    std::optional<double> start;
    std::optional<double> end;
    std::shared_ptr<const CueSource> source = {};
};

struct TitleFile {
    /// At least one.
    std::vector<Title> titles;
    // Of caption files: what stands before the first title and behind the last one.
    std::string header = {};
    std::string trailer = {};
    /// What annotations of its own look like that the palette does not have.
    std::vector<std::shared_ptr<const CaptionLook>> looks = {};
    /// What is wrong in it, one line each with its place.
    std::vector<std::string> warnings = {};
};

/// The titles of a WebVTT (.vtt) or SubRip (.srt) file, a script (.ass, .ssa), a text file (.txt) or an archive of
/// annotated strings (.annostring). Names that the palette lacks have keys of no palette, one each. None, with one line
/// that names the file in `error`, when it cannot be read.
std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error);

struct WrittenTitles {
    Ref<NSData> file;
    /// What of the titles the file does not hold, one line each.
    std::vector<std::string> losses;
};

/// The titles in the form that the path's ending asks for: captions (.vtt), in which those without times get some, or
/// an archive (.annostring). None, with one line that names the file in `error`, when there is no such form.
std::optional<WrittenTitles> titlesAsFile(const std::string& path, const TitleFile& titles,
                                          const Ref<QzAnnoPalette>& palette, std::string& error);

/// The titles as an archive: one annotated string, or an array of them; none, with the reason in `reason`, when they
/// have no such form.
Ref<NSData> archiveOfTitles(const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette, std::string& reason);
/// The way back, with keys as for `readTitleFile`. Warnings name annotations that the palette lacks.
std::optional<TitleFile> titlesOfArchive(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                         std::string& reason);

/// The palette of a property-list file. None, with one line that names the file in `error`, when it cannot be read.
Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error);

}  // namespace qz::composer
