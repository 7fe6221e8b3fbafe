#pragma once

#include <string>
#include <string_view>

namespace qz::tool {

/// The tool's messages on standard error, one line each: "qzanno: WHERE: what; what to do".
class Diagnostics {
public:
    enum class Verbosity { quiet, normal, verbose };

    explicit Diagnostics(Verbosity verbosity) : verbosity_(verbosity) {}

    /// Something failed. Always shown; the tool exits with 1.
    void error(std::string_view where, std::string_view what);
    /// Something is not as the user intended. Not shown if quiet.
    void warning(std::string_view where, std::string_view what);
    /// Shown only if verbose.
    void note(std::string_view where, std::string_view what);

    bool hasErrors() const { return hasErrors_; }
    Verbosity verbosity() const { return verbosity_; }

private:
    void write(std::string_view where, std::string_view what);

    Verbosity verbosity_;
    bool hasErrors_ = false;
};

/// "FILE:LINE", a place in a text file.
std::string placeInFile(const std::string& file, uint32_t line);

/// "\"Lower Third\"": a name for messages.
std::string quoted(std::string_view name);

}  // namespace qz::tool
