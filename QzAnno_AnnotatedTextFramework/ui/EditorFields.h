#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"

namespace qz {

/// An attribute as the annotation editor shows it: a flag that says whether the annotation sets it, and the fields that
/// hold its value. The names are those of the editor's properties and of the interface file's controls.
struct EditedAttribute {
    const Attribute* attribute;
    std::string flag;
    std::vector<std::string> fields;
};

/// The attributes of the vocabulary with fields, in its order.
const std::vector<EditedAttribute>& editedAttributes();

/// The names announced in a fixed order since the first editor, and the names added since; flags before fields in both.
///@{
const std::vector<std::string>& fixedEditorNames();
const std::vector<std::string>& addedEditorNames();
///@}

// `name` must be one of those.

/// The value of a flag or field that the annotation does not set.
Ref<NSObject> defaultOfEditorField(const std::string& name);
/// The value converted to the field's kind; the default if it cannot be.
Ref<NSObject> valueForEditorField(const std::string& name, const Ref<NSObject>& value);

/// The values of the attribute's fields, one each; for the bounding box, its distances from the edges of the screen.
/// Null for a field that the value does not set.
std::vector<Ref<NSObject>> fieldsFromValue(const Attribute& attribute, const Ref<NSObject>& value, NSSize screen);
/// The attribute's value from its fields, which must be of their kind.
Ref<NSObject> valueFromFields(const Attribute& attribute, const std::vector<Ref<NSObject>>& fields, NSSize screen);

}  // namespace qz
