#include "apps/qzanno/ExportCommand.h"

#include <filesystem>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/TitleReader.h"
#include "captions/AssWriter.h"

namespace qz::tool {

int exportCaptions(const ExportOptions& options, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.input, options.output, ignored)) {
        diagnostics.error(options.output, "is the input; name another file with -o");
        return 1;
    }
    const Ref<QzAnnoPalette> palette = loadPalette(options.palette, fonts, diagnostics);
    if (!palette) return 1;
    const auto missingFonts = std::make_shared<MissingFonts>();
    palette->setLog(missingFonts);
    const NSSize screen = {static_cast<float>(options.screen.width), static_cast<float>(options.screen.height)};
    CaptionLooks looks(palette, screen, options.looks);
    AssWriter writer(palette, screen, options.direction);
    // Those of the titles count, not those of styles that none has.
    missingFonts->clear();
    bool hasLosses = false;
    uint32_t withoutTimes = 0;
    const TitleSink sink = [&](Title&& title) {
        if (title.start && title.end)
            writer.add(*title.start, *title.end, title.placement, *title.text);
        else
            ++withoutTimes;
    };
    if (!readTitles(options.input, looks, diagnostics, sink, hasLosses)) return 1;
    if (withoutTimes > 0) {
        diagnostics.error(options.input,
                          "has titles without times; a script shows only what has some; export captions");
        return 1;
    }
    for (const std::string& font : missingFonts->names()) {
        diagnostics.warning(
            paletteName(options.palette),
            "the font " + tool::quoted(font) + " is not installed; the system font is written in its place");
    }
    for (const std::string& loss : writer.losses()) {
        options.strict ? diagnostics.error(options.output, loss) : diagnostics.warning(options.output, loss);
    }
    const bool isLossy = hasLosses || !missingFonts->names().empty() || !writer.losses().empty();
    if (options.strict && isLossy) {
        diagnostics.error(options.output, "--strict forbids that; nothing is written");
        return 1;
    }
    const std::string script = writer.script();
    std::string reason;
    if (!writeFileAtomically(options.output, {reinterpret_cast<const uint8_t*>(script.data()), script.size()},
                             &reason)) {
        diagnostics.error(options.output, reason);
        return 1;
    }
    diagnostics.note(options.output, "written");
    return 0;
}

}  // namespace qz::tool
