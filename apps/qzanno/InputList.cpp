#include "apps/qzanno/InputList.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "captions/Format.h"

namespace qz::tool {
namespace fs = std::filesystem;
namespace {

/// Gives each file a unique folder.
class FolderNames {
public:
    std::string folderFor(const fs::path& relative) {
        fs::path folder;
        for (const fs::path& part : relative.parent_path()) {
            if (part != ".." && part != "/" && part != ".") folder /= plain(part);
        }
        const fs::path stem = folder / plain(relative.stem());
        if (const auto name = take(stem)) return *name;
        const fs::path whole = folder / plain(relative.filename());
        if (const auto name = take(whole)) return *name;
        for (int number = 2;; ++number) {
            fs::path numbered = whole;
            numbered += "-" + std::to_string(number);
            if (const auto name = take(numbered)) return *name;
        }
    }

private:
    // A folder named like a picture would take a picture's place.
    static fs::path plain(fs::path name) {
        if (name.extension() == ".png") name += "_";
        return name;
    }

    std::optional<std::string> take(const fs::path& folder) {
        return taken_.insert(folder.string()).second ? std::optional(folder.string()) : std::nullopt;
    }

    std::set<std::string> taken_;
};

bool addFolder(const std::string& folder, std::vector<TitleInput>& inputs, FolderNames& names,
               Diagnostics& diagnostics) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (formatOfPath(entry->path().string()) && entry->is_regular_file(ignored)) files.push_back(entry->path());
    }
    if (error) {
        diagnostics.error(folder, "the folder cannot be read: " + error.message());
        return false;
    }
    if (files.empty()) {
        diagnostics.error(folder,
                          "holds no " + listOf(endingsOf(Format::any)) + " file; give a folder with such files");
        return false;
    }
    std::ranges::sort(files);
    for (const fs::path& file : files) {
        inputs.push_back({file.string(), names.folderFor(file.lexically_relative(folder))});
    }
    return true;
}

}  // namespace

std::string TitleInput::identity() const {
    return folder.empty() ? fs::path(path).filename().string() : folder;
}

std::optional<std::vector<TitleInput>> listInputs(const std::vector<std::string>& given, Diagnostics& diagnostics) {
    std::error_code ignored;
    if (given.size() == 1 && !fs::is_directory(given.front(), ignored)) return {{{given.front(), {}}}};
    std::vector<TitleInput> inputs;
    FolderNames names;
    for (const std::string& path : given) {
        if (!fs::is_directory(path, ignored))
            inputs.push_back({path, names.folderFor(fs::path(path).filename())});
        else if (!addFolder(path, inputs, names, diagnostics))
            return {};
    }
    return inputs;
}

}  // namespace qz::tool
