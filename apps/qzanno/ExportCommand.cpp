#include "apps/qzanno/ExportCommand.h"

#include <algorithm>
#include <filesystem>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/TitleReader.h"
#include "captions/Format.h"

namespace qz::tool {

int exportCaptions(const ExportOptions& options, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.input, options.output, ignored)) {
        diagnostics.error(options.output, "is the input; name another file with -o");
        return 1;
    }
    const Ref<QzAnnoPalette> palette = loadPalette(options.palette, fonts, diagnostics);
    if (!palette) return 1;
    const NSSize screen = {static_cast<float>(options.screen.width), static_cast<float>(options.screen.height)};
    CaptionLooks looks(palette, screen, options.looks);
    CaptionFile captions;
    bool hasLosses = false;
    const CueSink sink = [&](CaptionCue&& cue) { captions.cues.push_back(std::move(cue)); };
    if (!readCues(options.input, looks, diagnostics, sink, hasLosses)) return 1;
    if (!std::ranges::all_of(captions.cues, &CaptionCue::hasTimes)) {
        diagnostics.error(options.input, "has titles without times; captions show only what has some; export captions");
        return 1;
    }
    std::string reason;
    const auto written = formatToWrite(options.output)->write(captions, {looks, options.direction}, reason);
    if (!written) {
        diagnostics.error(options.input, reason);
        return 1;
    }
    for (const std::string& font : written->missingFonts) {
        diagnostics.warning(paletteName(options.palette),
                            "the font " + tool::quoted(font) + " is not installed; the system font is written instead");
    }
    for (const std::string& loss : written->losses) {
        options.strict ? diagnostics.error(options.output, loss) : diagnostics.warning(options.output, loss);
    }
    const bool isLossy = hasLosses || !written->missingFonts.empty() || !written->losses.empty();
    if (options.strict && isLossy) {
        diagnostics.error(options.output, "nothing is written, because of --strict");
        return 1;
    }
    if (!writeFileAtomically(options.output, NSData::dataWithBytes(written->file)->bytes(), &reason)) {
        diagnostics.error(options.output, reason);
        return 1;
    }
    diagnostics.note(options.output, "written");
    return 0;
}

}  // namespace qz::tool
