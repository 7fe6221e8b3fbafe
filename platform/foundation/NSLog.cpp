#include "QzAnno/platform/foundation/NSLog.h"

#include <cctype>
#include <cstdio>
#include <mutex>

namespace qz {
namespace {

// A hook may be replaced while another thread logs, so each line goes through a copy.
class Channel {
public:
    explicit Channel(DiagnosticHook hook) : hook_(std::move(hook)) {}

    void send(std::string_view line) {
        DiagnosticHook hook;
        {
            const std::lock_guard lock(mutex_);
            hook = hook_;
        }
        if (hook) hook(line);
    }
    void setHook(DiagnosticHook hook) {
        const std::lock_guard lock(mutex_);
        hook_ = std::move(hook);
    }

private:
    std::mutex mutex_;
    DiagnosticHook hook_;
};

Channel& logChannel() {
    static Channel channel{{}};
    return channel;
}

Channel& standardErrorChannel() {
    static Channel channel{writeToStandardError};
    return channel;
}

}  // namespace

std::string stringWithFormat(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    std::string text;
    const FormatArgument* argument = arguments.begin();
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            text += format[i];
            continue;
        }
        size_t conversion = i + 1;
        size_t width = 0;
        while (conversion < format.size() && std::isdigit(static_cast<unsigned char>(format[conversion]))) {
            width = width * 10 + static_cast<size_t>(format[conversion++] - '0');
        }
        if (conversion < format.size() && format[conversion] == '%') {
            text += '%';
        } else if (argument == arguments.end() || conversion == format.size()) {
            text.append(format.substr(i, conversion + 1 - i));
        } else {
            const std::string& value = (argument++)->text();
            if (value.size() < width) text.append(width - value.size(), ' ');
            text += value;
        }
        i = conversion;
    }
    return text;
}

void writeToStandardError(std::string_view line) {
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void NSLog(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    logChannel().send(stringWithFormat(format, arguments));
}

void setLogHook(DiagnosticHook hook) {
    logChannel().setHook(std::move(hook));
}

void NSStandardError(std::string_view format, std::initializer_list<FormatArgument> arguments) {
    standardErrorChannel().send(stringWithFormat(format, arguments));
}

void setStandardErrorHook(DiagnosticHook hook) {
    standardErrorChannel().setHook(hook ? std::move(hook) : writeToStandardError);
}

void reportFailedAssertion(std::string_view source, uint32_t line, std::string_view condition) {
    NSStandardError("%s:%u: failed assertion `%s'\n", {source, line, condition});
}

}  // namespace qz
