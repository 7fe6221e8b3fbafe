#pragma once

#include <optional>

namespace qz {

/// Where a cue asks to stand. What it leaves out is the palette's to say.
struct CuePlacement {
    enum class Alignment { start, centre, end, left, right };
    enum class Edge { start, centre, end };
    /// A line counted from 0 at the top, or from -1 at the foot; or a distance from the screen's top in per cent.
    struct Line {
        double value = 0;
        bool isPercentage = false;
        /// Which part of the text's box comes to the line; the start for counted lines.
        Edge edge = Edge::start;
        friend bool operator==(const Line&, const Line&) = default;
    };
    enum class Row { top, centre, bottom };

    /// Of the lines in their box.
    std::optional<Alignment> alignment;
    std::optional<Line> line;
    /// Per cent of the screen's width, 0 to 100, and which part of the box comes there; without the latter, the part
    /// that the alignment names.
    std::optional<double> position;
    std::optional<Edge> positionEdge;
    /// The box's width in per cent of the screen's, 0 to 100.
    std::optional<double> size;
    /// Where in the palette's box, for formats that know no more than that; no cue has it together with a line.
    std::optional<Row> row;

    bool isEmpty() const { return *this == CuePlacement{}; }
    friend bool operator==(const CuePlacement&, const CuePlacement&) = default;
};

}  // namespace qz
