#pragma once

#include <array>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

class QzAnno;

/// The kind of value that a field of the annotation editor holds; a choice is on or off.
enum class EditorFieldKind { flag, text, real, code, color, choice };

/// The kind of a field; none of that name is a bug.
EditorFieldKind kindOfEditorField(const std::string& name);
/// What the field holds while the annotation says nothing about it.
Ref<NSObject> defaultOfEditorField(const std::string& name);
/// The value in the field's kind; the default for what does not fit it.
Ref<NSObject> valueForEditorField(const std::string& name, const Ref<NSObject>& value);

/// A field whose value is an attribute's value.
struct PlainEditorField {
    const char* flag;
    const char* field;
    Ref<NSString> attribute;
};
const std::vector<PlainEditorField>& plainEditorFields();

/// The fields of `QzBoundingMarginsAttribute`, in the order of its numbers.
inline constexpr std::array kBoundingMarginsFields = {"boundingmarginsl", "boundingmarginsr", "boundingmarginst",
                                                      "boundingmarginsb"};

/// Two fields whose values are one attribute, the text form of a point.
struct PointEditorField {
    const char* flag;
    const char* x;
    const char* y;
    Ref<NSString> attribute;
};
const std::vector<PointEditorField>& pointEditorFields();

}  // namespace qz
