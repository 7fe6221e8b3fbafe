#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qz::tool {

/// A share of a run, with titles assigned by their identity. All shares of a count together make up the run.
struct Shard {
    uint32_t number = 1;  ///< 1 to `count`
    uint32_t count = 1;

    bool isWhole() const { return count == 1; }
    /// Depends only on the identity, so it is the same on every machine and independent of other titles.
    bool holds(std::string_view input, uint32_t index) const;
};

/// Parses "2/8"; returns no value for anything else.
std::optional<Shard> parsedShard(std::string_view text);

/// The share of a Slurm array task, from the variables SLURM_ARRAY_TASK_ID, _COUNT, and optionally _MIN and _STEP; the
/// whole run if they are not set. Returns no value, with the reason in `error`, if they do not define a share.
std::optional<Shard> shardOfEnvironment(std::string* error);

/// One shell command for each share of a run: this process's arguments with "--list-commands" replaced by "--shard".
std::vector<std::string> commandsOfShards(const std::vector<std::string>& arguments, uint32_t count);

}  // namespace qz::tool
