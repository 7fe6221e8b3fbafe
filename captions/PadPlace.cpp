#include "captions/PadPlace.h"

#include <array>
#include <charconv>

namespace qz {
namespace {

std::optional<int> numberBehind(std::string_view text, std::string_view name) {
    if (!text.starts_with(name)) return {};
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data() + name.size(), end, number);
    return error == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::optional<int> padPlace(std::string_view override) {
    if (const auto number = numberBehind(override, "an")) {
        return *number >= 1 && *number <= 9 ? number : std::nullopt;
    }
    const auto number = numberBehind(override, "a");
    return number ? padPlaceOfOld(*number) : std::nullopt;
}

std::optional<int> padPlaceOfOld(int number) {
    if (number < 1 || number > 11 || number % 4 == 0) return {};
    const int column = number % 4;
    return number < 4 ? column : number < 8 ? column + 6 : column + 3;
}

CuePlacement placementOfPad(int padPlace) {
    using Alignment = CuePlacement::Alignment;
    using Row = CuePlacement::Row;
    constexpr std::array columns = {Alignment::left, Alignment::centre, Alignment::right};
    constexpr std::array rows = {Row::bottom, Row::centre, Row::top};
    CuePlacement placement;
    placement.alignment = columns[static_cast<size_t>((padPlace - 1) % 3)];
    placement.row = rows[static_cast<size_t>((padPlace - 1) / 3)];
    return placement;
}

}  // namespace qz
