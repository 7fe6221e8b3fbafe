#include "apps/qzanno/FileEndings.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "captions/Format.h"
#include "platform/foundation/FileEnding.h"

namespace qz::tool {
namespace {

const std::vector<std::string> kPictureEndings = {".png", ".rgba"};

bool contains(const std::vector<std::string>& endings, const std::string& ending) {
    return std::ranges::find(endings, ending) != endings.end();
}

/// Whether the ending looks like a file's: a point, a letter and up to four more letters and digits. Folders may be
/// called "season.1" or "2024.05.11".
bool isOfFile(const std::string& ending) {
    const auto isLetterOrDigit = [](unsigned char character) { return std::isalnum(character) != 0; };
    return ending.size() >= 2 && ending.size() <= 6 && std::isalpha(static_cast<unsigned char>(ending[1])) &&
           std::all_of(ending.begin() + 1, ending.end(), isLetterOrDigit);
}

void check(CLI::Option& option, std::function<std::string(std::string&)> fault) {
    option.check(CLI::Validator(std::move(fault), ""));
}

}  // namespace

std::string captionsText() {
    return "Captions (" + listOf(endingsOf(Format::captions), ", ") + ")";
}

void allowEndings(CLI::Option& option, std::vector<std::string> endings, WithoutEnding without) {
    check(option, [endings = std::move(endings), without](std::string& path) {
        const std::string ending = endingOf(path);
        if (path == "-" || contains(endings, ending)) return std::string();
        if (ending.empty() && without == WithoutEnding::allowed) return std::string();
        return path + " cannot be written; give a file that ends in " + listOf(endings);
    });
}

void allowPictures(CLI::Option& option) {
    check(option, [](std::string& path) {
        const std::string ending = endingOf(path);
        std::error_code ignored;
        if (contains(kPictureEndings, ending) || !isOfFile(ending) || std::filesystem::is_directory(path, ignored))
            return std::string();
        return path + " cannot be written; pictures end in " + listOf(kPictureEndings) +
               ", and a folder of that name is written " + path + "/";
    });
}

}  // namespace qz::tool
