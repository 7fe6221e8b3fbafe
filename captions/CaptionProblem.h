#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qz {

/// What is wrong with a caption file, or with one place of it.
struct CaptionProblem {
    enum Kind {
        /// A class, a colour or a font trait that is no annotation of the palette.
        unknownClass,
        /// A voice for which the palette has no annotation.
        unknownName,
        /// Something that the file asks for and titles do not show.
        notShown,
        /// Something that is not in the form that the format asks for.
        malformed,
    };
    Kind kind = malformed;
    /// From 1; 0 for a matter of the whole file.
    uint32_t line = 1;
    /// One line that stands by itself behind the place.
    std::string message;

    /// Whether titles show less than the file asks for.
    bool isLoss() const { return kind == unknownClass || kind == notShown; }
};

/// Collects the problems of a file in the order in which they are found.
class CaptionProblems {
public:
    void add(CaptionProblem::Kind kind, uint32_t line, std::string message) {
        problems_.push_back({kind, line, std::move(message)});
    }

    /// Adds it unless there was one about the same matter, which is the message if no other is given.
    void addOnce(CaptionProblem::Kind kind, uint32_t line, std::string message, std::string matter = {}) {
        if (told_.insert(matter.empty() ? message : std::move(matter)).second) add(kind, line, std::move(message));
    }

    std::vector<CaptionProblem> take() { return std::move(problems_); }

private:
    std::vector<CaptionProblem> problems_;
    std::set<std::string> told_;
};

}  // namespace qz
