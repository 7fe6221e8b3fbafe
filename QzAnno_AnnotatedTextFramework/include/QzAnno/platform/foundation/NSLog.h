#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// One argument of a log format: a text, a number, or an object's description ("(null)" for a null object).
class FormatArgument {
public:
    /// Implicit, so that arguments can be listed directly. The text is made at once; for an object, it is the
    /// description. A null pointer to characters is not allowed.
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

    /// The text that replaces the conversion, before padding to its field width.
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// Replaces the conversions in a format in order: %@, %i, %d, %u, %s, each with an optional field width; %% is a
/// percent sign. A conversion without an argument is left unchanged.
std::string stringWithFormat(std::string_view format, std::initializer_list<FormatArgument> arguments = {});

/// Receives one whole line in UTF-8, including its line feed. May be called from any thread that uses the library.
using DiagnosticHook = Callback<void(std::string_view line)>;

/// A hook that writes to standard error.
void writeToStandardError(std::string_view line);

/// Writes one line to the process's log. The line is dropped unless a log hook is set.
void NSLog(std::string_view format, std::initializer_list<FormatArgument> arguments = {});
/// Sends later lines to the hook, as in `setLogHook(writeToStandardError)`; an empty hook drops them. Safe while other
/// threads log; a line being written still reaches the former hook.
void setLogHook(DiagnosticHook hook);

/// Writes a line that the library sends to standard error rather than to the log. A tool that must stay quiet sets a
/// hook here too.
void NSStandardError(std::string_view format, std::initializer_list<FormatArgument> arguments = {});
/// As `setLogHook`, for lines to standard error; an empty hook sends them to standard error again.
void setStandardErrorHook(DiagnosticHook hook);

/// Reports an assertion that a caller has violated, as "source:line: failed assertion `condition'" on standard error.
/// Does not end the process; the calling function refuses the operation.
void reportFailedAssertion(std::string_view source, uint32_t line, std::string_view condition);

}  // namespace qz
