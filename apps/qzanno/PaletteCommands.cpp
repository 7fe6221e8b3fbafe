#include "apps/qzanno/PaletteCommands.h"

#include <vector>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/PaletteReadability.h"
#include "apps/qzanno/PaletteText.h"
#include "apps/qzanno/TextTable.h"
#include "captions/Ass.h"
#include "captions/AssPalette.h"
#include "captions/Format.h"

namespace qz::tool {
namespace {

TableRow rowFor(const QzAnnoPalette& palette, int32_t priority) {
    const Ref<const QzAnno> anno = palette.lookupAnno(palette.annoKeyAtPriority(priority));
    const NSDictionary& attributes = *anno->allAttributes();
    return {std::to_string(priority), anno->name()->utf8(), fontText(attributes, palette.fontLibrary()),
            styleText(attributes), frameText(attributes)};
}

bool isScript(const std::string& path) {
    const Format* const format = formatOfPath(path);
    return format && format->read == readAss;
}

Ref<QzAnnoPalette> paletteOfScript(const std::string& path, const std::shared_ptr<FontLibrary>& fonts,
                                   Diagnostics& diagnostics) {
    CaptionProblem error;
    const Ref<NSData> file = readFile(path, &error.message);
    CaptionProblems problems;
    const std::optional<AssScript> script = file ? parseAssScript(*file, problems, &error) : std::nullopt;
    if (script && script->styles.empty()) error.message = "has no styles for a palette";
    if (!script || script->styles.empty()) {
        diagnostics.error(path, error.message);
        return {};
    }
    for (const CaptionProblem& problem : problems.take()) {
        // Losses in lines of dialogue do not concern the styles.
        if (!problem.isLoss()) diagnostics.warning(placeInFile(path, problem.line), problem.message);
    }
    std::vector<std::string> losses;
    Ref<QzAnnoPalette> palette = paletteOfAss(*script, fonts, losses);
    for (const std::string& loss : losses) diagnostics.warning(path, loss);
    return palette;
}

}  // namespace

int showPalette(const std::string& path, const std::shared_ptr<FontLibrary>& fonts, Diagnostics& diagnostics) {
    const Ref<QzAnnoPalette> palette = loadPalette(path, fonts, diagnostics);
    if (!palette) return 1;
    std::vector<TableRow> rows = {{"", "NAME", "FONT", "TEXT AND LAYERS", "FRAME"}};
    for (int32_t priority = palette->maxPriority(); priority >= 0; --priority)
        rows.push_back(rowFor(*palette, priority));
    printTable(rows);
    return 0;
}

int checkPalette(const PaletteCheckOptions& options, const std::shared_ptr<FontLibrary>& fonts,
                 Diagnostics& diagnostics) {
    const Ref<QzAnnoPalette> palette = loadPalette(options.path, fonts, diagnostics);
    if (!palette) return 1;
    const size_t faults = reportFaults(options.path, fonts.get(), diagnostics);
    const NSSize screen = {static_cast<float>(options.screen.width), static_cast<float>(options.screen.height)};
    const std::vector<ReadabilityWarning> warnings = readabilityOf(*palette, screen);
    for (const ReadabilityWarning& warning : warnings) {
        const std::string line = tool::quoted(warning.annotationName) + ": " + warning.message;
        options.strict ? diagnostics.error(options.path, line) : diagnostics.warning(options.path, line);
    }
    if (faults > 0 || (options.strict && !warnings.empty())) return 1;
    diagnostics.note(options.path, "no faults");
    return 0;
}

int convertPalette(const std::string& input, const std::string& output, const std::shared_ptr<FontLibrary>& fonts,
                   Diagnostics& diagnostics) {
    const Ref<QzAnnoPalette> palette =
        isScript(input) ? paletteOfScript(input, fonts, diagnostics) : loadPalette(input, fonts, diagnostics);
    if (!palette) return 1;
    std::string reason;
    const Ref<NSData> data = dataOfPalette(palette, output, &reason);
    if (!data) {
        diagnostics.error(input, reason);
        return 1;
    }
    if (!writeFileAtomically(output, data->bytes(), &reason)) {
        diagnostics.error(output, reason);
        return 1;
    }
    diagnostics.note(output, "written");
    return 0;
}

}  // namespace qz::tool
