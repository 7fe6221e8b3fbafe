#include "apps/qzanno/ManifestMerge.h"

#include <algorithm>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::tool {
namespace {

/// The titles of a file, by their index.
struct SourceLines {
    std::string name;
    /// From a share's heading, or else the highest index found.
    uint32_t titles = 0;
    /// Indices without a title, from a share's heading.
    std::set<uint32_t> leftOut;
    std::map<uint32_t, std::string> lines;

    bool isMissing(uint32_t index) const { return !lines.contains(index) && !leftOut.contains(index); }
};

/// "3, 7-9"
std::string missingOf(const SourceLines& source) {
    std::string text;
    for (uint32_t index = 1; index <= source.titles; ++index) {
        if (!source.isMissing(index)) continue;
        uint32_t last = index;
        while (last < source.titles && source.isMissing(last + 1)) ++last;
        text += (text.empty() ? "" : ", ") + std::to_string(index);
        if (last > index) text += "-" + std::to_string(last);
        index = last;
    }
    return text;
}

class Merge {
public:
    explicit Merge(Diagnostics& diagnostics) : diagnostics_(diagnostics) {}

    /// Returns false if the file cannot be read or belongs to another run.
    bool add(const std::string& path) {
        std::string reason;
        const Ref<NSData> file = readFile(path, &reason);
        if (!file) {
            diagnostics_.error(path, reason);
            return false;
        }
        std::string_view rest = file->view();
        for (uint32_t number = 1; !rest.empty(); ++number) {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
            const auto entry = nlohmann::json::parse(line, nullptr, false);
            if (isHeading(entry)) {
                if (!addHeading(path, entry)) return false;
            } else if (!isTitle(entry) || !addTitle(entry, line, path)) {
                diagnostics_.error(placeInFile(path, number), "is not a line of a manifest and is left out");
            }
        }
        return true;
    }

    void nameMissing() {
        for (uint32_t share = 1; share <= shares_; ++share) {
            if (!seenShares_.contains(share)) {
                diagnostics_.error("", "the manifest of share " + std::to_string(share) + " of " +
                                           std::to_string(shares_) + " is missing");
            }
        }
        for (const SourceLines& source : sources_) {
            const std::string missing = missingOf(source);
            if (!missing.empty()) diagnostics_.error(source.name, "titles are missing: " + missing);
        }
    }

    std::string lines() const {
        std::string text;
        for (const SourceLines& source : sources_) {
            for (const auto& [index, line] : source.lines) text += line + "\n";
        }
        return text;
    }

private:
    static bool isHeading(const nlohmann::json& entry) {
        return entry.is_object() && entry.contains("shard") && entry["shard"].is_number_unsigned() &&
               entry.contains("of") && entry["of"].is_number_unsigned() && entry.contains("sources") &&
               std::ranges::all_of(entry["sources"], [](const nlohmann::json& source) {
                   return source.is_object() && source.contains("titles") && source["titles"].is_number_unsigned();
               });
    }

    static bool isTitle(const nlohmann::json& entry) {
        return entry.is_object() && entry.contains("index") && entry["index"].is_number_unsigned() &&
               entry["index"] > 0u && entry.contains("file");
    }

    static std::string nameOf(const nlohmann::json& entry) {
        const auto name = entry.find("source");
        return name != entry.end() && name->is_string() ? name->get<std::string>() : std::string();
    }

    bool addHeading(const std::string& path, const nlohmann::json& entry) {
        const auto run = std::pair(entry["of"], entry["sources"]);
        if (!run_.first.is_null() && run_ != run) {
            diagnostics_.error(path, "belongs to another run than the files before it; merge the shares of one run");
            return false;
        }
        run_ = run;
        shares_ = entry["of"];
        seenShares_.insert(entry["shard"].get<uint32_t>());
        for (const nlohmann::json& source : entry["sources"]) {
            SourceLines& lines = sourceOf(nameOf(source));
            lines.titles = source["titles"];
            const auto leftOut = source.find("leftOut");
            if (leftOut == source.end() || !leftOut->is_array()) continue;
            for (const nlohmann::json& index : *leftOut) {
                if (index.is_number_unsigned()) lines.leftOut.insert(index.get<uint32_t>());
            }
        }
        return true;
    }

    bool addTitle(const nlohmann::json& entry, std::string_view line, const std::string& path) {
        SourceLines& source = sourceOf(nameOf(entry));
        const uint32_t index = entry["index"];
        if (shares_ == 0) source.titles = std::max(source.titles, index);
        if (index > source.titles) return false;
        const auto [place, isNew] = source.lines.try_emplace(index, line);
        if (!isNew && place->second != line) {
            diagnostics_.error(path, "has a line for title " + std::to_string(index) + " of " +
                                         tool::quoted(source.name) +
                                         " that differs from an earlier manifest's; the earlier one is kept");
        }
        return true;
    }

    SourceLines& sourceOf(const std::string& name) {
        const auto found = std::ranges::find(sources_, name, &SourceLines::name);
        if (found != sources_.end()) return *found;
        sources_.push_back({name, 0, {}, {}});
        return sources_.back();
    }

    Diagnostics& diagnostics_;
    std::pair<nlohmann::json, nlohmann::json> run_;
    uint32_t shares_ = 0;
    std::set<uint32_t> seenShares_;
    // In run order.
    std::vector<SourceLines> sources_;
};

}  // namespace

int mergeManifests(const std::vector<std::string>& inputs, const std::string& output, Diagnostics& diagnostics) {
    Merge merge(diagnostics);
    for (const std::string& path : inputs) {
        if (!merge.add(path)) return 1;
    }
    merge.nameMissing();
    const std::string lines = merge.lines();
    std::string reason;
    if (!writeFileAtomically(output, {reinterpret_cast<const uint8_t*>(lines.data()), lines.size()}, &reason))
        diagnostics.error(output, reason);
    return diagnostics.hasErrors() ? 1 : 0;
}

}  // namespace qz::tool
