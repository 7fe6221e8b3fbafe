#pragma once

#include <optional>

namespace qz {

/// The placement of a cue. The palette decides anything that it leaves out.
struct CuePlacement {
    enum class Alignment { start, centre, end, left, right };
    enum class Edge { start, centre, end };
    /// A line number from 0 at the top, or from -1 at the bottom; or a distance from the screen's top in per cent.
    struct Line {
        double value = 0;
        bool isPercentage = false;
        /// The part of the text's box at the line; the start for numbered lines.
        Edge edge = Edge::start;
        friend bool operator==(const Line&, const Line&) = default;
    };
    enum class Row { top, centre, bottom };

    /// The alignment of the lines in their box.
    std::optional<Alignment> alignment;
    std::optional<Line> line;
    /// Per cent of the screen's width, 0 to 100, and the part of the box there; by default the part named by the
    /// alignment.
    std::optional<double> position;
    std::optional<Edge> positionEdge;
    /// The box's width in per cent of the screen's, 0 to 100.
    std::optional<double> size;
    /// The row in the palette's box, for formats that specify no more; never together with a line.
    std::optional<Row> row;

    bool isEmpty() const { return *this == CuePlacement{}; }
    friend bool operator==(const CuePlacement&, const CuePlacement&) = default;
};

}  // namespace qz
