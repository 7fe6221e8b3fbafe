#pragma once

#include <set>
#include <string>

#include "QzAnno/render/RenderReport.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Reports what is not shown as requested in titles, one line each. `where` names the title.
class ReportLines {
public:
    /// With `isStrict`, each is an error.
    ReportLines(Diagnostics& diagnostics, bool isStrict) : diagnostics_(diagnostics), isStrict_(isStrict) {}

    /// Returns false if the title must not be rendered. Missing characters and cut text are warnings, the former once
    /// per font; substitutes and cut layers are notes. Missing fonts are left to the palette's log.
    bool tell(const std::string& where, const std::u16string& text, const RenderReport& report);

private:
    void tellSubstitution(const std::string& where, const RenderReport::Substitution& substitution);
    void tellMissingGlyph(const std::string& where, const RenderReport::MissingGlyph& missing);
    void tellMissingTrait(const std::string& where, const RenderReport::MissingTrait& missing);
    void tellClipping(const std::string& where, const std::u16string& text, const RenderReport::Clipping& clipping);

    Diagnostics& diagnostics_;
    const bool isStrict_;
    std::set<std::string> toldMissing_;
};

}  // namespace qz::tool
