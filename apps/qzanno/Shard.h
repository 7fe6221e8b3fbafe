#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qz::tool {

/// A share of a run: the titles whose identity falls to it. All shares of a count together are the run.
struct Shard {
    uint32_t number = 1;  ///< 1 to `count`
    uint32_t count = 1;

    bool isWhole() const { return count == 1; }
    /// By the identity alone, so that it is the same on every machine and whatever else is rendered.
    bool holds(std::string_view input, uint32_t index) const;
};

/// "2/8"; none for anything else.
std::optional<Shard> parsedShard(std::string_view text);

/// The share of a Slurm array task, by the variables SLURM_ARRAY_TASK_ID, _COUNT, and _MIN and _STEP where they are
/// set; the whole run without them. None, with the reason in `error`, when they make no share.
std::optional<Shard> shardOfEnvironment(std::string* error);

/// One shell command for each share of a run: the arguments of this process, without "--list-commands", with "--shard".
std::vector<std::string> commandsOfShards(const std::vector<std::string>& arguments, uint32_t count);

}  // namespace qz::tool
