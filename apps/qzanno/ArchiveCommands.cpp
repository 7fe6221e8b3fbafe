#include "apps/qzanno/ArchiveCommands.h"

#include <iostream>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/PaletteFile.h"
#include "apps/qzanno/PaletteText.h"
#include "apps/qzanno/TitleReader.h"
#include "captions/ArchivedTitles.h"
#include "platform/foundation/ObjectMap.h"
#include "platform/foundation/TypedStreamListing.h"

namespace qz::tool {
namespace {

std::string joined(const NSSet& keys) {
    std::string names;
    for (const ObjectMap::Entry& entry : keys.map().entries()) {
        names += (names.empty() ? "" : ", ") + static_cast<const QzAnnoKey&>(*entry.key).name()->utf8();
    }
    return names.empty() ? "-" : names;
}

std::string text(Range range) {
    return std::to_string(range.location) + "-" + std::to_string(range.end());
}

/// Prints the text on separate lines, so that it cannot be mistaken for anything else.
void printText(const std::string& utf8) {
    for (size_t start = 0; start <= utf8.size();) {
        const size_t end = std::min(utf8.find('\n', start), utf8.size());
        std::cout << "  | " << utf8.substr(start, end - start) << "\n";
        start = end + 1;
    }
}

void printLook(const QzAnnoPalette& palette, const Ref<NSSet>& keys) {
    const Ref<NSDictionary> given = palette.attributesForSet(keys);
    const NSDictionary& attributes = *given;
    for (const std::string& part :
         {fontText(attributes, palette.fontLibrary()), styleText(attributes), frameText(attributes)}) {
        if (!part.empty()) std::cout << "      " << part << "\n";
    }
}

void print(const QzAnnoString& string, size_t number, const QzAnnoPalette* palette) {
    const Ref<NSSet> keys = string.allKeys();
    const std::vector<QzAnnoString::Run> runs = string.runs();
    std::cout << "title " << number << ": length " << string.length() << ", annotations: " << joined(*keys) << "\n";
    printText(string.string()->utf8());
    for (const QzAnnoString::Run& run : runs) {
        std::cout << "  " << text(run.range) << "  " << joined(*run.keys) << "\n";
        if (palette) printLook(*palette, run.keys);
    }
}

}  // namespace

int packArchive(const std::string& input, const std::string& paletteFile, const std::string& output,
                Diagnostics& diagnostics) {
    const Ref<QzAnnoPalette> palette = loadPalette(paletteFile, {}, diagnostics);
    if (!palette) return 1;
    // An archive holds names, not looks.
    CaptionLooks looks(palette, {}, Looks::house);
    bool hasLosses = false;
    CaptionFile captions;
    const CueSink sink = [&captions](CaptionCue&& cue) { captions.cues.push_back(std::move(cue)); };
    if (!readCues(input, looks, diagnostics, sink, hasLosses)) return 1;
    if (captions.cues.empty()) diagnostics.warning(input, "holds no captions; the archive is an empty array");
    std::string reason;
    const auto written = writeArchive(captions, {looks}, reason);
    if (!written || !writeFileAtomically(output, NSData::dataWithBytes(written->file)->bytes(), &reason)) {
        diagnostics.error(output, reason);
        return 1;
    }
    diagnostics.note(output, "written");
    return 0;
}

int showArchive(const std::string& path, const std::string& paletteFile, const std::shared_ptr<FontLibrary>& fonts,
                Diagnostics& diagnostics) {
    Ref<QzAnnoPalette> palette;
    if (!paletteFile.empty()) {
        palette = loadPalette(paletteFile, fonts, diagnostics);
        if (!palette) return 1;
    }
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (!file) {
        diagnostics.error(path, reason);
        return 1;
    }
    const auto titles = archivedTitles(file, palette, &reason);
    if (!titles) {
        diagnostics.error(path, reason + "; 'qzanno archive dump' shows what it is");
        return 1;
    }
    for (size_t i = 0; i < titles->strings.size(); ++i) print(*titles->strings[i], i + 1, palette.get());
    for (const std::string& name : titles->unknownNames) {
        diagnostics.warning(path, "uses " + quoted(name) + ", which " + paletteName(paletteFile) + " does not have");
    }
    if (titles->lostCount == 0) return 0;
    diagnostics.error(path, lostAnnotations(titles->lostCount) + "; 'qzanno archive dump' shows what they are");
    return 1;
}

int dumpArchive(const std::string& path, Diagnostics& diagnostics) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    if (file && listTypedStream(
                    *file, [](std::string_view line) { std::cout << line << "\n"; }, &reason))
        return 0;
    std::cout.flush();
    diagnostics.error(path, reason);
    return 1;
}

}  // namespace qz::tool
