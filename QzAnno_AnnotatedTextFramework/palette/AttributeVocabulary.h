#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// An attribute that annotations may hold: everything that checks, listings, the editor, script formats and documents
/// need to know of it. Its effect on a title is in `TitleStyle` and `FrameStyle`.
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
    /// The group it belongs to; the order of the table and of listings.
    enum class Group { font, letters, layer, place };

    /// How the annotation editor shows the attribute. The flag that switches it on is `name` with the prefix "en_".
    struct Field {
        /// Without the suffix for kinds with several fields, or a layer's number; empty if not edited.
        const char* name = "";
        /// The field's position, from 1, in the fixed order of announcements since the first editor; 0 for the others,
        /// which follow in the order of the table.
        int place = 0;
        /// The initial value of a number when it is switched on.
        float start = 0;
    };

    std::string constant;  ///< the C++ name: "QzFontSizeAttribute"
    Ref<NSString> name;    ///< the name in stored palettes
    Kind kind = Kind::string;
    Group group = Group::font;
    std::string label;      ///< "Font size"
    std::string meaning;    ///< in one line, with the unit
    std::string absent;     ///< what applies without the attribute
    const char* word = "";  ///< precedes its value in a listing, or shows a flag that is on: "kern", "underlined"
    const char* unit = "";  ///< the unit of a number: "points"
    /// A number outside is a fault; `tooLow` and `tooHigh` say what happens then.
    ///@{
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    const char* tooLow = "";
    const char* tooHigh = "";
    ///@}
    std::vector<const char*> choices = {};
    /// Whether it styles a title as a whole, and so counts only in annotations that cover the whole title.
    bool isOfFrame = false;
    /// The layer, from 1 at the top; 0 if it is not an attribute of a layer.
    uint32_t layer = 0;
    Field field = {};
    const char* inAss = "";    ///< style columns and overrides for it in SubStation Alpha; empty if there are none
    const char* assLoss = "";  ///< then the message for titles with it; empty for a general message
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
