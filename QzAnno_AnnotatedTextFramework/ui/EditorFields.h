#pragma once

#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeVocabulary.h"

namespace qz {

/// An attribute as the annotation editor shows it: a flag that says whether the annotation sets it, and the fields that
/// hold its value. All are named; the names are those of the editor's properties and of the interface file's controls.
struct EditedAttribute {
    const Attribute* attribute;
    std::string flag;
    std::vector<std::string> fields;
};

/// Those of the vocabulary that have fields, in its order.
const std::vector<EditedAttribute>& editedAttributes();

/// The names that have been announced in a fixed order since the first editor, and those that have been added since;
/// flags before fields in both.
///@{
const std::vector<std::string>& fixedEditorNames();
const std::vector<std::string>& addedEditorNames();
///@}

// `name` is one of those; another is a bug.

/// What a flag or field holds while the annotation says nothing about it.
Ref<NSObject> defaultOfEditorField(const std::string& name);
/// The value in the field's kind; the default for what does not fit it.
Ref<NSObject> valueForEditorField(const std::string& name, const Ref<NSObject>& value);

/// The values of the attribute's fields, one each. Those of the bounding box are its distances from the edges of the
/// screen. Null for what the value does not tell.
std::vector<Ref<NSObject>> fieldsFromValue(const Attribute& attribute, const Ref<NSObject>& value, NSSize screen);
/// The attribute's value; each field holds a value of its kind.
Ref<NSObject> valueFromFields(const Attribute& attribute, const std::vector<Ref<NSObject>>& fields, NSSize screen);

}  // namespace qz
