#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qz {

/// A problem with a caption file, or with one place in it.
struct CaptionProblem {
    enum Kind {
        /// A class, a colour or a font trait without an annotation in the palette.
        unknownClass,
        /// A voice without an annotation in the palette.
        unknownName,
        /// A feature of the file that titles do not support.
        notShown,
        /// Something that violates the format.
        malformed,
    };
    Kind kind = malformed;
    /// Counts from 1; 0 if it concerns the whole file.
    uint32_t line = 1;
    /// One line to follow the place.
    std::string message;

    /// Whether titles show less than the file requests.
    bool isLoss() const { return kind == unknownClass || kind == notShown; }
};

/// Collects the problems of a file in the order in which they are found.
class CaptionProblems {
public:
    void add(CaptionProblem::Kind kind, uint32_t line, std::string message) {
        problems_.push_back({kind, line, std::move(message)});
    }

    /// Adds a problem unless there was one about the same matter, which by default is the message.
    void addOnce(CaptionProblem::Kind kind, uint32_t line, std::string message, std::string matter = {}) {
        if (told_.insert(matter.empty() ? message : std::move(matter)).second) add(kind, line, std::move(message));
    }

    std::vector<CaptionProblem> take() { return std::move(problems_); }

private:
    std::vector<CaptionProblem> problems_;
    std::set<std::string> told_;
};

}  // namespace qz
