#include "QzAnno_AnnotatedTextFramework/ui/EditorFields.h"

#include <algorithm>
#include <map>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"

namespace qz {
namespace {

constexpr float kDefaultFontSize = 24.0f;
// The annotation's name is edited too, but is not an attribute.
constexpr const char* kNameFlag = "en_annoname";
constexpr const char* kNameField = "annoname";

/// Converts any value to a field's; null if it does not fit.
using Converter = Ref<NSObject> (*)(const Ref<NSObject>& value);

template <class T>
Ref<NSObject> object(const Ref<NSObject>& value) {
    return std::dynamic_pointer_cast<T>(value);
}

template <auto make, auto read>
Ref<NSObject> number(const Ref<NSObject>& value) {
    const auto given = numberFrom(value);
    return given ? make(((*given).*read)()) : Ref<NSObject>();
}

constexpr Converter kText = object<NSString>;
constexpr Converter kColor = object<NSColor>;
constexpr Converter kBool = number<&NSNumber::numberWithBool, &NSNumber::boolValue>;
constexpr Converter kInt = number<&NSNumber::numberWithInt, &NSNumber::intValue>;
constexpr Converter kFloat = number<&NSNumber::numberWithFloat, &NSNumber::floatValue>;
constexpr Converter kDouble = number<&NSNumber::numberWithDouble, &NSNumber::doubleValue>;

struct Field {
    std::string ending;
    Converter convert;
    Ref<NSObject> byDefault;
};

std::vector<Field> fieldsOf(const Attribute& attribute) {
    const Ref<NSObject> zero = NSNumber::numberWithFloat(0), black = NSColor::blackColor();
    switch (attribute.kind) {
        case Attribute::Kind::string:
            return {{"", kText, NSFont::systemFontOfSize(kDefaultFontSize)->fontName()}};
        case Attribute::Kind::number:
            return {{"", kFloat, NSNumber::numberWithFloat(attribute.field.start)}};
        case Attribute::Kind::flag:
            // A user who switches the attribute on wants the trait.
            return {{"", kBool, NSNumber::numberWithBool(true)}};
        case Attribute::Kind::choice:
            return {{"", kInt, NSNumber::numberWithInt(0)}};
        case Attribute::Kind::color:
            return {{"", kColor, black}};
        case Attribute::Kind::point:
            return {{"_x", kFloat, zero}, {"_y", kFloat, zero}};
        case Attribute::Kind::box:
            return {{"type", kInt, NSNumber::numberWithInt(0)}, {"color", kColor, black}};
        case Attribute::Kind::rectangle:
        case Attribute::Kind::margins:
            break;
    }
    return {{"l", kDouble, zero}, {"r", kDouble, zero}, {"t", kDouble, zero}, {"b", kDouble, zero}};
}

std::string nameOf(const Attribute& attribute, const std::string& ending) {
    return attribute.field.name + ending + (attribute.layer > 1 ? std::to_string(attribute.layer) : "");
}

const Field& fieldNamed(const std::string& name) {
    static const std::map<std::string, Field> fields = [] {
        const Field flag = {"", kBool, NSNumber::numberWithBool(false)};
        std::map<std::string, Field> all = {{kNameFlag, flag}, {kNameField, {"", kText, "-"_ns}}};
        for (const EditedAttribute& edited : editedAttributes()) {
            all[edited.flag] = flag;
            for (const Field& field : fieldsOf(*edited.attribute)) all[nameOf(*edited.attribute, field.ending)] = field;
        }
        return all;
    }();
    return fields.at(name);
}

/// The attributes in the fixed order, or the others.
std::vector<EditedAttribute> editedInOrder(bool isFixed) {
    std::vector<EditedAttribute> some;
    for (const EditedAttribute& edited : editedAttributes()) {
        if ((edited.attribute->field.place > 0) == isFixed) some.push_back(edited);
    }
    std::ranges::stable_sort(some, {}, [](const EditedAttribute& edited) { return edited.attribute->field.place; });
    return some;
}

void addFlags(const std::vector<EditedAttribute>& edited, std::vector<std::string>& names) {
    for (const EditedAttribute& each : edited) names.push_back(each.flag);
}

void addFields(const std::vector<EditedAttribute>& edited, std::vector<std::string>& names) {
    for (const EditedAttribute& each : edited) names.insert(names.end(), each.fields.begin(), each.fields.end());
}

double doubleOf(const Ref<NSObject>& field) {
    return numberFrom(field)->doubleValue();
}

}  // namespace

const std::vector<EditedAttribute>& editedAttributes() {
    static const std::vector<EditedAttribute> all = [] {
        std::vector<EditedAttribute> made;
        for (const Attribute& attribute : attributeVocabulary()) {
            if (!*attribute.field.name) continue;
            std::vector<std::string> fields;
            for (const Field& field : fieldsOf(attribute)) fields.push_back(nameOf(attribute, field.ending));
            made.push_back({&attribute, "en_" + nameOf(attribute, ""), std::move(fields)});
        }
        return made;
    }();
    return all;
}

const std::vector<std::string>& fixedEditorNames() {
    static const std::vector<std::string> names = [] {
        std::vector<EditedAttribute> edited = editedInOrder(true);
        std::vector<std::string> made = {kNameFlag};
        addFlags(edited, made);
        // The box's flag comes last, but its fields before those of the bounding box.
        const auto isOf = [](Attribute::Kind kind) {
            return [kind](const EditedAttribute& each) { return each.attribute->kind == kind; };
        };
        const auto box = std::ranges::find_if(edited, isOf(Attribute::Kind::box));
        std::rotate(std::ranges::find_if(edited, isOf(Attribute::Kind::rectangle)), box, std::next(box));
        addFields(edited, made);
        made.push_back(kNameField);
        return made;
    }();
    return names;
}

const std::vector<std::string>& addedEditorNames() {
    static const std::vector<std::string> names = [] {
        const std::vector<EditedAttribute> edited = editedInOrder(false);
        std::vector<std::string> made;
        addFlags(edited, made);
        addFields(edited, made);
        return made;
    }();
    return names;
}

Ref<NSObject> defaultOfEditorField(const std::string& name) {
    return fieldNamed(name).byDefault;
}

Ref<NSObject> valueForEditorField(const std::string& name, const Ref<NSObject>& value) {
    const Field& field = fieldNamed(name);
    const Ref<NSObject> converted = field.convert(value);
    return converted ? converted : field.byDefault;
}

std::vector<Ref<NSObject>> fieldsFromValue(const Attribute& attribute, const Ref<NSObject>& value, NSSize screen) {
    const auto numbers = [](std::initializer_list<double> values) {
        std::vector<Ref<NSObject>> made;
        for (const double each : values) made.push_back(NSNumber::numberWithDouble(each));
        return made;
    };
    const auto text = std::dynamic_pointer_cast<NSString>(value);
    switch (attribute.kind) {
        case Attribute::Kind::point: {
            const NSPoint point = text ? NSPointFromString(*text) : NSPoint();
            return numbers({double{point.x}, double{point.y}});
        }
        case Attribute::Kind::rectangle: {
            const NSRect box = text ? NSRectFromString(*text) : NSRect();
            const float left = box.origin.x * screen.width, top = box.origin.y * screen.height;
            const float right = screen.width - box.maxX() * screen.width;
            const float bottom = screen.height - box.maxY() * screen.height;
            return numbers({double{left}, double{right}, double{top}, double{bottom}});
        }
        case Attribute::Kind::margins: {
            const Margins margins = marginsFrom(value).value_or(Margins());
            return numbers({margins.left, margins.right, margins.top, margins.bottom});
        }
        case Attribute::Kind::box: {
            const auto box = std::dynamic_pointer_cast<QzBBoxInfo>(value);
            if (!box) return {nullptr, nullptr};
            return {NSNumber::numberWithInt(box->type()), box->color()};
        }
        default:
            return {value};
    }
}

Ref<NSObject> valueFromFields(const Attribute& attribute, const std::vector<Ref<NSObject>>& fields, NSSize screen) {
    switch (attribute.kind) {
        case Attribute::Kind::point:
            return NSStringFromPoint({numberFrom(fields[0])->floatValue(), numberFrom(fields[1])->floatValue()});
        case Attribute::Kind::rectangle: {
            const double left = doubleOf(fields[0]), right = doubleOf(fields[1]);
            const double top = doubleOf(fields[2]), bottom = doubleOf(fields[3]);
            const double width = screen.width, height = screen.height;
            return NSStringFromRect({{static_cast<float>(left / width), static_cast<float>(top / height)},
                                     {static_cast<float>((width - right - left) / width),
                                      static_cast<float>((height - bottom - top) / height)}});
        }
        case Attribute::Kind::margins:
            return NSArray::arrayWithObjects(fields);
        case Attribute::Kind::box:
            return QzBBoxInfo::qzbbWithColor(std::static_pointer_cast<NSColor>(fields[1]),
                                             numberFrom(fields[0])->intValue());
        default:
            return fields[0];
    }
}

}  // namespace qz
