#pragma once

#include <map>
#include <optional>
#include <string>

#include "apps/qzanno/Manifest.h"

namespace qz::tool {

/// The titles done by earlier runs, from their complete manifest or the lines of killed runs.
class DoneTitles {
public:
    /// Reads the existing lines, and moves those of killed runs out of the next run's way. Returns no value, with the
    /// reason in `error`, if that fails.
    static std::optional<DoneTitles> load(const std::string& manifest, std::string* error);

    /// The line of exactly this title, if there is one; with `isStrict` only if everything was shown as requested.
    std::string lineOf(const TitleEntry& title, bool isStrict) const;

    /// Deletes the lines of killed runs, once a complete manifest has replaced them.
    static void clear(const std::string& manifest);

private:
    void addLinesOf(const std::string& path);

    // Lines by the name of the picture's file.
    std::map<std::string, std::string> lines_;
};

/// Whether the file of a manifest's line exists, with the bytes that the line records. May be called on any thread.
bool isFileWhole(const std::string& line);

}  // namespace qz::tool
