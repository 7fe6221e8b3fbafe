#pragma once

#include <optional>
#include <string>
#include <vector>

#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"

namespace qz::composer {

/// A title of a file, with the times at which it shows, in seconds; none of a text without times.
struct Title {
    Ref<QzAnnoString> text;
    std::optional<double> start;
    std::optional<double> end;
};

struct TitleFile {
    /// At least one.
    std::vector<Title> titles;
    /// What is wrong in it, one line each with its place.
    std::vector<std::string> warnings;
};

/// The titles of a WebVTT file (.vtt), a text file (.txt) or an archive of annotated strings (.annostring). None, with
/// one line that names the file in `error`, when it cannot be read.
std::optional<TitleFile> readTitleFile(const std::string& path, const Ref<QzAnnoPalette>& palette, std::string& error);

/// Writes the titles as an archive: one annotated string, or an array of them. Times are not part of it. False, with
/// one line in `error` and a former file as it was, when that fails.
bool writeTitleFile(const std::string& path, const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette,
                    std::string& error);

/// The titles in the form of such an archive; none, with the reason in `reason`, when they have none.
Ref<NSData> archiveOfTitles(const std::vector<Title>& titles, const Ref<QzAnnoPalette>& palette, std::string& reason);
/// The way back. Warnings name annotations that the palette lacks.
std::optional<TitleFile> titlesOfArchive(const Ref<NSData>& archive, const Ref<QzAnnoPalette>& palette,
                                         std::string& reason);

/// The palette of a property-list file. None, with one line that names the file in `error`, when it cannot be read.
Ref<QzAnnoPalette> readPaletteFile(const std::string& path, std::string& error);

}  // namespace qz::composer
