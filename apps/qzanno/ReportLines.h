#pragma once

#include <set>
#include <string>

#include "QzAnno/render/RenderReport.h"
#include "apps/qzanno/Diagnostics.h"

namespace qz::tool {

/// Says of titles, one line a matter, what is not shown as it was asked for. `where` names the title.
class ReportLines {
public:
    /// With `isStrict` each matter is an error.
    ReportLines(Diagnostics& diagnostics, bool isStrict) : diagnostics_(diagnostics), isStrict_(isStrict) {}

    /// False when the title must not be rendered. A lack of characters, and text that is not seen, are warnings, the
    /// former once for a font; substitutes and cut layers are notes. Missing fonts are left to the palette's log.
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
