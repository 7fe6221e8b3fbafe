#include "apps/qzanno/OutputPlan.h"

#include <filesystem>

#include "platform/foundation/FileEnding.h"

namespace qz::tool {
namespace fs = std::filesystem;
namespace {

constexpr size_t kDigits = 4;

OutputPlan planForFile(const std::string& path) {
    OutputPlan plan;
    plan.file = path;
    plan.isRaw = endingOf(path) == ".rgba";
    return plan;
}

OutputPlan planForDirectory(const std::string& path) {
    OutputPlan plan;
    plan.directory = path;
    return plan;
}

OutputPlan planForStandardOutput() {
    OutputPlan plan;
    plan.toStandardOutput = plan.isRaw = true;
    return plan;
}

bool namesFile(const std::string& output) {
    std::error_code ignored;
    const std::string ending = endingOf(output);
    return (ending == ".png" || ending == ".rgba") && !fs::is_directory(output, ignored);
}

}  // namespace

std::string OutputPlan::fileFor(uint32_t index) const {
    if (toStandardOutput) return "-";
    if (directory.empty()) return file;
    std::string digits = std::to_string(index);
    if (digits.size() < kDigits) digits.insert(0, kDigits - digits.size(), '0');
    return (fs::path(directory) / (digits + ".png")).string();
}

std::optional<OutputPlan> planOutput(const std::string& output, const std::string& input, size_t titleCount,
                                     Diagnostics& diagnostics) {
    if (output == "-") return planForStandardOutput();
    if (output.empty()) {
        const std::string stem = input.empty() ? "title" : fs::path(input).stem().string();
        return titleCount == 1 ? planForFile(stem + ".png") : planForDirectory(stem);
    }
    if (!namesFile(output)) return planForDirectory(output);
    if (titleCount > 1) {
        diagnostics.error(output, "one file cannot hold " + std::to_string(titleCount) + " titles; give a directory");
        return {};
    }
    return planForFile(output);
}

std::optional<OutputPlan> planOutputOfFolder(const std::string& output, const std::string& folder,
                                             Diagnostics& diagnostics) {
    if (output == "-") return planForStandardOutput();
    if (namesFile(output)) {
        diagnostics.error(output, "one file cannot hold the titles of several files; give a directory");
        return {};
    }
    return planForDirectory((fs::path(output) / folder).string());
}

bool makeDirectory(const std::string& path, Diagnostics& diagnostics) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!error && fs::is_directory(path, error)) return true;
    diagnostics.error(path, error ? "cannot be made: " + error.message() : "is not a directory");
    return false;
}

}  // namespace qz::tool
