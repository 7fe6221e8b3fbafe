#pragma once

#include <string>
#include <string_view>

namespace qz::tool {

/// What the tool says on standard error: one line a matter, "qzanno: WHERE: what; what to do".
class Diagnostics {
public:
    enum class Verbosity { quiet, normal, verbose };

    explicit Diagnostics(Verbosity verbosity) : verbosity_(verbosity) {}

    /// Something failed. Shown always; the tool ends with exit code 1.
    void error(std::string_view where, std::string_view what);
    /// Something is not as the user meant it. Not shown when quiet.
    void warning(std::string_view where, std::string_view what);
    /// Shown when verbose.
    void note(std::string_view where, std::string_view what);

    bool hasErrors() const { return hasErrors_; }
    Verbosity verbosity() const { return verbosity_; }

private:
    void write(std::string_view where, std::string_view what);

    Verbosity verbosity_;
    bool hasErrors_ = false;
};

/// "FILE:LINE", the place of a matter in a text file.
std::string placeInFile(const std::string& file, uint32_t line);

/// "\"Lower Third\"": a name as messages show it.
std::string quoted(std::string_view name);

}  // namespace qz::tool
