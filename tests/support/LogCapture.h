#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz::test {

/// Collects what is logged, and what goes to standard error, while it lives.
class LogCapture {
public:
    LogCapture() {
        setLogHook([this](std::string_view line) { lines_.emplace_back(line); });
        setStandardErrorHook([this](std::string_view line) { errors_.emplace_back(line); });
    }
    ~LogCapture() {
        setLogHook({});
        setStandardErrorHook({});
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    const std::vector<std::string>& lines() const { return lines_; }
    const std::vector<std::string>& errors() const { return errors_; }
    void clear() {
        lines_.clear();
        errors_.clear();
    }

private:
    std::vector<std::string> lines_;
    std::vector<std::string> errors_;
};

}  // namespace qz::test
