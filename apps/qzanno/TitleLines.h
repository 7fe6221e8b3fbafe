#pragma once

#include <memory>
#include <string>
#include <vector>

#include "QzAnno/platform/text/FontLibrary.h"
#include "apps/qzanno/ReportLines.h"
#include "apps/qzanno/TitleJob.h"

namespace qz::tool {

/// Reports failures, missing fonts, and what is not shown as requested in titles.
class TitleLines {
public:
    TitleLines(Diagnostics& diagnostics, const DrawingOptions& options)
        : diagnostics_(diagnostics), options_(options), reportLines_(diagnostics, options.strict) {}

    void setFonts(std::shared_ptr<FontLibrary> fonts) { fonts_ = std::move(fonts); }
    /// If set, titles are named with their file.
    void setSeveralFiles(bool areSeveral) { areSeveral_ = areSeveral; }

    /// Returns false if the title was not rendered.
    bool tell(const TitleJob& job);

private:
    bool tellMissingFonts(const std::string& where, const std::vector<std::string>& missing);

    Diagnostics& diagnostics_;
    const DrawingOptions& options_;
    ReportLines reportLines_;
    std::shared_ptr<FontLibrary> fonts_;
    bool areSeveral_ = false;
    std::vector<std::string> told_;
};

}  // namespace qz::tool
