#pragma once

#include <map>
#include <optional>
#include <string>

#include "apps/qzanno/Manifest.h"

namespace qz::tool {

/// What earlier runs have done, by the lines of their manifest: whole, or the lines of runs that were killed.
class DoneTitles {
public:
    /// Reads what there is, and puts the lines of killed runs where the next run does not write. None, with the reason
    /// in `error`, when that fails.
    static std::optional<DoneTitles> load(const std::string& manifest, std::string* error);

    /// The line of just this title, if there is one; with `isStrict` only if all of it was shown as asked for.
    std::string lineOf(const TitleEntry& title, bool isStrict) const;

    /// Forgets the killed runs, once a whole manifest has taken their place.
    static void clear(const std::string& manifest);

private:
    void addLinesOf(const std::string& path);

    // By the name of the picture's file.
    std::map<std::string, std::string> lines_;
};

/// Whether the file of a manifest's line is there, with the bytes that the line tells. May be called on any thread.
bool isFileWhole(const std::string& line);

}  // namespace qz::tool
