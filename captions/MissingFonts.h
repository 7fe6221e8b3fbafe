#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "QzAnno/palette/QzLog.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// Collects a palette's missing fonts, each once, in order.
class MissingFonts final : public QzLog {
public:
    void logError(const NSDictionary& entry) override {
        const auto cause = entry.objectForKey<NSString>(*QzLogEntry_Cause);
        if (!cause) return;
        std::string name = cause->utf8();
        if (std::ranges::find(names_, name) == names_.end()) names_.push_back(std::move(name));
    }

    const std::vector<std::string>& names() const { return names_; }
    void clear() { names_.clear(); }

private:
    std::vector<std::string> names_;
};

}  // namespace qz
