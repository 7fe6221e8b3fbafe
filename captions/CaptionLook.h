#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "captions/AssScript.h"
#include "captions/CaptionColour.h"
#include "captions/CueText.h"

namespace qz {

/// A look that a caption file itself defines, and the name of the annotation that has it: italics, a colour, a style of
/// a script. Plain values, so that it can go to a thread with a palette of its own.
struct CaptionLook {
    /// A style of a script.
    struct Style {
        AssStyle style;
        /// The one that all others of the script are compared with.
        AssStyle global;
        /// Of the script's screen, in its pixels.
        double shorterSide = 0;
        /// All of the style, instead of what it has different from the global one.
        bool isWhole = false;
        /// Whether it also undoes what the line's own style does to the letters, as `{\r}` does.
        bool isReset = false;
    };

    std::string name;
    std::optional<bool> isBold = {};
    std::optional<bool> isItalic = {};
    std::optional<bool> isUnderlined = {};
    std::optional<bool> isStruck = {};
    /// Of the letters.
    std::optional<CaptionColour> colour = {};
    /// Of a box behind the whole text.
    std::optional<CaptionColour> box = {};
    /// A BCP 47 tag; empty without one.
    std::string language = {};
    std::shared_ptr<const Style> style = {};

    /// The same for looks that are the same, and for no others. Not for people.
    std::string identity() const;
};

/// The look that every format gives a span: a trait, a colour in the way of CSS, a language. Empty for classes
/// and voices, and where the name is no colour or no language tag.
std::optional<CaptionLook> lookOfSpan(const CueSpan& span);

/// The look that WebVTT gives a class without a style sheet: a colour of the letters, "yellow", or of what is behind
/// them, "bg_yellow".
std::optional<CaptionLook> lookOfWebVTTClass(std::string_view name);

}  // namespace qz
