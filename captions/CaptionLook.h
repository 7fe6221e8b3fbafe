#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "captions/AssScript.h"
#include "captions/CaptionColour.h"
#include "captions/CueText.h"

namespace qz {

/// A look defined by a caption file, such as italics, a colour or a script's style, and the name of its annotation.
/// Plain values, so that it can be passed to a thread with its own palette.
struct CaptionLook {
    /// A script's style.
    struct Style {
        AssStyle style;
        /// The style that the script's other styles are compared with.
        AssStyle global;
        /// The shorter side of the script's screen, in script pixels.
        double shorterSide = 0;
        /// Whether to use all of the style, not only its differences from the global one.
        bool isWhole = false;
        /// Whether it also undoes the effect of the line's style on the letters, as `{\r}` does.
        bool isReset = false;
    };

    std::string name;
    std::optional<bool> isBold = {};
    std::optional<bool> isItalic = {};
    std::optional<bool> isUnderlined = {};
    std::optional<bool> isStruck = {};
    /// The colour of the letters.
    std::optional<CaptionColour> colour = {};
    /// The colour of a box behind the whole text.
    std::optional<CaptionColour> box = {};
    /// A BCP 47 tag, or empty.
    std::string language = {};
    std::shared_ptr<const Style> style = {};

    /// Equal for equal looks, and only for those. Not for display.
    std::string identity() const;
};

/// The look of a span in every format: a trait, a CSS colour, a language. No value for classes and voices, and for
/// names that are not a colour or language tag.
std::optional<CaptionLook> lookOfSpan(const CueSpan& span);

/// WebVTT's default look for a class: a colour of the letters, "yellow", or of the background, "bg_yellow".
std::optional<CaptionLook> lookOfWebVTTClass(std::string_view name);

}  // namespace qz
