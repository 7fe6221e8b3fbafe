#include "apps/qzanno/DoneTitles.h"

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno/ManifestFile.h"
#include "apps/qzanno/Sha256.h"

namespace qz::tool {
namespace {

/// The file that keeps the lines of killed runs during the next run.
std::string keptBeside(const std::string& manifest) {
    return manifest + ".resumed";
}

nlohmann::json parsed(const std::string& line) {
    return nlohmann::json::parse(line, nullptr, false);
}

std::string textOf(const nlohmann::json& line, const char* name) {
    const auto value = line.find(name);
    return value != line.end() && value->is_string() ? value->get<std::string>() : std::string();
}

std::optional<double> numberOf(const nlohmann::json& line, const char* name) {
    const auto value = line.find(name);
    return value != line.end() && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

bool isFullyShown(const nlohmann::json& line) {
    for (const char* const lack : {"missingFonts", "substitutions", "missingGlyphs", "missingTraits", "clipped"}) {
        const auto list = line.find(lack);
        if (list == line.end() || !list->empty()) return false;
    }
    return true;
}

}  // namespace

std::optional<DoneTitles> DoneTitles::load(const std::string& manifest, std::string* error) {
    DoneTitles done;
    const std::string kept = keptBeside(manifest);
    const std::string part = ManifestFile::partOf(manifest);
    for (const std::string& path : {manifest, kept, part}) done.addLinesOf(path);
    std::error_code ignored;
    if (!std::filesystem::exists(part, ignored)) return done;
    std::string lines;
    for (const auto& [file, line] : done.lines_) lines += line;
    if (!writeFileAtomically(kept, {reinterpret_cast<const uint8_t*>(lines.data()), lines.size()}, error)) return {};
    return done;
}

void DoneTitles::addLinesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        // A line that was being written when the run was killed has no line feed, and is valid JSON only if complete.
        const nlohmann::json entry = parsed(line);
        const std::string picture = entry.is_object() ? textOf(entry, "file") : "";
        if (!picture.empty()) lines_[picture] = line + "\n";
    }
}

std::string DoneTitles::lineOf(const TitleEntry& title, bool isStrict) const {
    const auto found = lines_.find(title.file);
    if (found == lines_.end()) return {};
    const nlohmann::json line = parsed(found->second);
    const bool isSame = textOf(line, "source") == title.source && numberOf(line, "index") == title.index &&
                        numberOf(line, "start") == title.start && numberOf(line, "end") == title.end &&
                        textOf(line, "text") == title.text && textOf(line, "sameAs") == title.sameAs &&
                        textOf(line, "key") == title.key;
    return isSame && (!isStrict || isFullyShown(line)) ? found->second : std::string();
}

void DoneTitles::clear(const std::string& manifest) {
    std::error_code ignored;
    std::filesystem::remove(keptBeside(manifest), ignored);
}

bool isFileWhole(const std::string& line) {
    const nlohmann::json entry = parsed(line);
    const std::string path = textOf(entry, "file");
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error || numberOf(entry, "bytes") != static_cast<double>(size)) return false;
    const Ref<NSData> file = readFile(path, nullptr);
    return file && sha256Of(file->bytes()) == textOf(entry, "sha256");
}

}  // namespace qz::tool
