#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// An attribute that annotations may hold: all that checks, listings, the editor, script formats and documents have to
/// know of it. What it does to a title is in `TitleStyle` and `FrameStyle`.
struct Attribute {
    enum class Kind {
        string,
        number,
        flag,       ///< a number that counts as a boolean
        choice,     ///< a whole number, an index into `choices`
        color,      ///< an `NSColor`
        point,      ///< a string, "{x, y}"
        rectangle,  ///< a string, "{{x, y}, {width, height}}"
        margins,    ///< an array of four numbers: left, right, top, bottom
        box,        ///< a `QzBBoxInfo`
    };
    /// What it belongs to; the order of the table and of listings.
    enum class Group { font, letters, layer, place };

    /// How the annotation editor shows the attribute. The flag that switches it on is "en_" before `name`.
    struct Field {
        /// Without the ending that a kind of several fields adds, or the number of a layer; empty: not edited.
        const char* name = "";
        /// The field's place, from 1, among those that have been announced in a fixed order since the first editor; 0
        /// for the others, which follow in the order of the table.
        int place = 0;
        /// What a number begins with when it is switched on.
        float start = 0;
    };

    std::string constant;  ///< the C++ name: "QzFontSizeAttribute"
    Ref<NSString> name;    ///< under which palettes store it
    Kind kind = Kind::string;
    Group group = Group::font;
    std::string label;      ///< "Font size"
    std::string meaning;    ///< in one line, with the unit
    std::string absent;     ///< what holds without the attribute
    const char* word = "";  ///< before its value in a listing, or for a flag that is on: "kern", "underlined"
    const char* unit = "";  ///< of a number: "points"
    /// A number outside is a fault, and `tooLow` or `tooHigh` what happens then.
    ///@{
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    const char* tooLow = "";
    const char* tooHigh = "";
    ///@}
    std::vector<const char*> choices = {};
    /// Whether it styles a title as a whole, and so counts only in annotations that cover all of it.
    bool isOfFrame = false;
    /// Of which layer, from 1, the uppermost; 0 for an attribute of no layer.
    uint32_t layer = 0;
    Field field = {};
    const char* inAss = "";    ///< style columns and overrides that hold it in SubStation Alpha; empty: it has none
    const char* assLoss = "";  ///< what is said then of a title that has it; empty: a general line
};

/// Every attribute that the library knows, in the order of listings.
const std::vector<Attribute>& attributeVocabulary();

/// Null for a name that the library does not know.
const Attribute* attributeNamed(const NSObject& name);

/// The names of one layer's attributes.
struct LayerAttributes {
    Ref<NSString> color;
    Ref<NSString> offset;
    Ref<NSString> width;
};

/// All layers, from the uppermost down.
const std::vector<LayerAttributes>& layerAttributes();

}  // namespace qz
