#include "apps/qzanno/TitleLines.h"

#include <algorithm>

#include "QzAnno/platform/text/FontLibrary.h"

namespace qz::tool {
namespace {

/// "; there are "Noto Sans-Regular", "Noto Sans-Bold"", or nothing.
std::string namesLike(const std::string& font, const FontLibrary& fonts) {
    constexpr size_t kNamesMax = 6;
    std::string list;
    for (const std::string& name : fonts.namesLike(font, kNamesMax)) {
        list += (list.empty() ? "; there are " : ", ") + quoted(name);
    }
    return list;
}

}  // namespace

bool TitleLines::tell(const TitleJob& job) {
    const std::string title = "title " + std::to_string(job.title.index);
    const std::string where = areSeveral_ ? job.title.source + ": " + title : title;
    // Report both.
    const bool hasFonts = tellMissingFonts(where, job.picture.missingFonts);
    if (!reportLines_.tell(where, job.content.text, job.picture.report) || !hasFonts) return false;
    if (job.isDone) return true;
    diagnostics_.error(job.isFilesError ? job.title.file : where, job.error);
    return false;
}

bool TitleLines::tellMissingFonts(const std::string& where, const std::vector<std::string>& missing) {
    for (const std::string& font : missing) {
        if (options_.strict) {
            diagnostics_.error(where,
                               "the font " + quoted(font) + " is not installed; not rendered, because of --strict");
        } else if (std::ranges::find(told_, font) == told_.end()) {
            told_.push_back(font);
            diagnostics_.warning(
                paletteName(options_.palette),
                "the font " + quoted(font) + " is not installed; the system font is used" + namesLike(font, *fonts_));
        }
    }
    return missing.empty() || !options_.strict;
}

}  // namespace qz::tool
