#pragma once

#include <cstdint>
#include <string>

namespace qz {

/// What is wrong with a caption file, or with one place of it.
struct CaptionProblem {
    enum Kind {
        /// A class or a colour that is no annotation of the palette.
        unknownClass,
        /// A voice, or one of b, i, u, for which the palette has no annotation.
        unknownName,
        /// Something that is not in the form that the format asks for.
        malformed,
    };
    Kind kind = malformed;
    /// From 1.
    uint32_t line = 1;
    /// One line that stands by itself behind the place.
    std::string message;
};

}  // namespace qz
