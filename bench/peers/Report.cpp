#include "bench/peers/Report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

namespace qz::peers {
namespace {

constexpr int kRowHeight = 24, kLabelWidth = 520, kBarsWidth = 420, kFigureWidth = 120, kTop = 56;

std::string labelOf(const Ratio& ratio) {
    return ratio.work + ": " + ratio.ours + " / " + ratio.peer;
}

/// The position of a ratio from 0.001 to 100 along the bars.
double placeOf(double ratio) {
    return (std::log10(std::clamp(ratio, 0.001, 100.0)) + 3) / 5 * kBarsWidth;
}

template <class... Values>
std::string formatted(const char* format, Values... values) {
    char text[512];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::string rowOf(const Ratio& ratio, int y) {
    const char* color = !ratio.bound ? "#9aa5ad" : ratio.isWithinBound() ? "#3d8c6c" : "#c98a3a";
    const int figures = kLabelWidth + kBarsWidth + 10;
    std::string row = formatted("<text x='%d' y='%d' text-anchor='end'>%s</text>\n", kLabelWidth - 10, y + 16,
                                labelOf(ratio).c_str()) +
                      formatted("<rect x='%d' y='%d' width='%.1f' height='%d' rx='3' fill='%s'/>\n", kLabelWidth, y + 5,
                                placeOf(ratio.value()), kRowHeight - 10, color) +
                      formatted("<text x='%d' y='%d' font-weight='bold'>%.2g</text>\n", figures, y + 16, ratio.value());
    if (!ratio.bound) return row;
    return row +
           formatted("<path d='M%.1f %dv%d' stroke='#333' stroke-width='2'/>\n", kLabelWidth + placeOf(*ratio.bound),
                     y + 2, kRowHeight - 4) +
           formatted("<text x='%d' y='%d' fill='#777'>of %.3g</text>\n", figures + 50, y + 16, *ratio.bound);
}

}  // namespace

void printTable(const std::vector<Ratio>& ratios) {
    std::printf("%-82s %10s %10s %8s %6s\n", "what", "ms", "against ms", "ratio", "bound");
    for (const Ratio& ratio : ratios)
        std::printf("%-82s %10.3f %10.3f %8.3f %6s%s\n", labelOf(ratio).c_str(), ratio.oursMs, ratio.peerMs,
                    ratio.value(), ratio.bound ? formatted("%.2f", *ratio.bound).c_str() : "",
                    ratio.isWithinBound() ? "" : "  above");
}

std::string jsonOf(const std::vector<Ratio>& ratios) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Ratio& r : ratios) {
        list.push_back({{"work", r.work},
                        {"ours", r.ours},
                        {"peer", r.peer},
                        {"oursMs", r.oursMs},
                        {"peerMs", r.peerMs},
                        {"ratio", r.value()}});
        if (r.bound) list.back()["bound"] = *r.bound;
    }
    return list.dump(2) + "\n";
}

std::string chartOf(const std::vector<Ratio>& ratios) {
    const int width = kLabelWidth + kBarsWidth + kFigureWidth,
              bottom = kTop + kRowHeight * static_cast<int>(ratios.size());
    std::string svg = formatted(
        "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' font-family='sans-serif' "
        "font-size='12' fill='#222'>\n<rect width='100%%' height='100%%' fill='#fff'/>\n",
        width, bottom + 16);
    svg += formatted(
        "<text x='%d' y='22' font-size='15'>Time taken, as a ratio: shorter is better; the dark mark is the "
        "bound</text>\n",
        16);
    for (const double tick : {0.001, 0.01, 0.1, 1.0, 10.0, 100.0}) {
        const double x = kLabelWidth + placeOf(tick);
        svg += formatted(
            "<path d='M%.1f %dV%d' stroke='#ddd'/>\n<text x='%.1f' y='%d' text-anchor='middle' "
            "fill='#777'>%g</text>\n",
            x, kTop, bottom, x, kTop - 8, tick);
    }
    for (size_t i = 0; i < ratios.size(); ++i) svg += rowOf(ratios[i], kTop + kRowHeight * static_cast<int>(i));
    return svg + "</svg>\n";
}

}  // namespace qz::peers
