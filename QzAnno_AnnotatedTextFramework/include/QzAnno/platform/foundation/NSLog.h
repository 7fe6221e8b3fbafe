#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// One argument of a log format: a text, a number, or an object's description ("(null)" for none).
class FormatArgument {
public:
    /// Implicit, so that arguments stand in a row as they are. The text is made at once, of an object its description;
    /// a null pointer to characters is not allowed.
    ///@{
    FormatArgument(std::string text) : text_(std::move(text)) {}
    FormatArgument(std::string_view text) : text_(text) {}
    FormatArgument(const char* text) : text_(text) {}
    FormatArgument(int32_t number) : text_(std::to_string(number)) {}
    FormatArgument(uint32_t number) : text_(std::to_string(number)) {}
    FormatArgument(const NSObject& object) : text_(object.description()) {}
    template <class T>
    FormatArgument(const Ref<T>& object) : text_(object ? object->description() : "(null)") {}
    ///@}

    /// What takes the conversion's place, before it is padded to a field width.
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// Fills the conversions of a format in order: %@, %i, %d, %u, %s, each with an optional field width; %% is a percent
/// sign. A conversion without an argument is left as it stands.
std::string stringWithFormat(std::string_view format, std::initializer_list<FormatArgument> arguments = {});

/// Receives one whole line, its line feed included, in UTF-8. May be called from any thread that uses the library.
using DiagnosticHook = Callback<void(std::string_view line)>;

/// A hook for standard error.
void writeToStandardError(std::string_view line);

/// Writes one line to the log of the process, which nobody hears until a log hook is set.
void NSLog(std::string_view format, std::initializer_list<FormatArgument> arguments = {});
/// Sends later lines to the hook, as `setLogHook(writeToStandardError)`; an empty hook drops them. Safe while other
/// threads log; a line that is on its way still reaches the hook before.
void setLogHook(DiagnosticHook hook);

/// Writes what the library sends to standard error itself, past the log; a tool that must stay quiet sets a hook here
/// too.
void NSStandardError(std::string_view format, std::initializer_list<FormatArgument> arguments = {});
/// As `setLogHook`, for these lines; with an empty hook they go to standard error again.
void setStandardErrorHook(DiagnosticHook hook);

/// Reports an assertion that a caller has broken, as "source:line: failed assertion `condition'" on standard error.
/// Does not end the process; the caller of this function refuses the operation.
void reportFailedAssertion(std::string_view source, uint32_t line, std::string_view condition);

}  // namespace qz
