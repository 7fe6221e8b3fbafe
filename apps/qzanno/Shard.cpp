#include "apps/qzanno/Shard.h"

#include <charconv>
#include <cstdlib>

#include "apps/qzanno/Sha256.h"

namespace qz::tool {
namespace {

template <class Number>
std::optional<Number> parsed(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::string inShell(const std::string& word) {
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./:,@%";
    if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) return word;
    std::string text = "'";
    for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

}  // namespace

bool Shard::holds(std::string_view input, uint32_t index) const {
    if (isWhole()) return true;
    Sha256 hash;
    hash.addText(input);
    hash.addNumber(index);
    uint64_t value = 0;
    const Sha256::Digest digest = hash.digest();
    for (size_t i = 0; i < 8; ++i) value = value << 8 | digest[i];
    return value % count == number - 1;
}

std::optional<Shard> parsedShard(std::string_view text) {
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return {};
    const auto number = parsed<uint32_t>(text.substr(0, slash));
    const auto count = parsed<uint32_t>(text.substr(slash + 1));
    if (!number || !count || *number < 1 || *number > *count) return {};
    return Shard{*number, *count};
}

std::optional<Shard> shardOfEnvironment(std::string* error) {
    const auto variable = [](const char* name, int64_t otherwise) -> std::optional<int64_t> {
        const char* const text = std::getenv(name);
        return text ? parsed<int64_t>(text) : otherwise;
    };
    if (!std::getenv("SLURM_ARRAY_TASK_ID") || !std::getenv("SLURM_ARRAY_TASK_COUNT")) return Shard{};
    const auto id = variable("SLURM_ARRAY_TASK_ID", 0);
    const auto count = variable("SLURM_ARRAY_TASK_COUNT", 0);
    // Arrays begin at 1 by default.
    const auto first = variable("SLURM_ARRAY_TASK_MIN", 1);
    const auto step = variable("SLURM_ARRAY_TASK_STEP", 1);
    if (id && count && first && step && *step > 0 && *count > 0 && *count <= UINT32_MAX) {
        const int64_t number = (*id - *first) / *step + 1;
        if (*id >= *first && (*id - *first) % *step == 0 && number <= *count)
            return Shard{static_cast<uint32_t>(number), static_cast<uint32_t>(*count)};
    }
    *error = "the SLURM_ARRAY_TASK variables do not define a share; use an array such as 1-8, or give --shard K/N";
    return {};
}

std::vector<std::string> commandsOfShards(const std::vector<std::string>& arguments, uint32_t count) {
    std::string command;
    constexpr std::string_view option = "--list-commands";
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == option)
            ++i;
        else if (!arguments[i].starts_with(std::string(option) + "="))
            command += inShell(arguments[i]) + " ";
    }
    std::vector<std::string> commands;
    for (uint32_t number = 1; number <= count; ++number) {
        commands.push_back(command + "--shard " + std::to_string(number) + "/" + std::to_string(count));
    }
    return commands;
}

}  // namespace qz::tool
