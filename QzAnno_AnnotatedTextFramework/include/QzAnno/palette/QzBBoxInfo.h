#pragma once

#include <cstdint>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class NSColor;

/// How to draw the box around a text: a colour and a type; immutable. Equality is identity.
class QzBBoxInfo final : public NSObject {
public:
    /// `type`: 0 or less draws no box, 1 strokes its outline, more than 1 fills it. Returns null if the colour is null.
    ///@{
    static Ref<QzBBoxInfo> initWithColor(const Ref<NSColor>& color, int32_t type);
    static Ref<QzBBoxInfo> qzbbWithColor(const Ref<NSColor>& color, int32_t type) { return initWithColor(color, type); }
    ///@}

    /// Never null.
    const Ref<NSColor>& color() const { return col_; }
    /// The type as given.
    int32_t type() const { return type_; }

    /// Another object with the same colour and type.
    Ref<QzBBoxInfo> copy() const { return initWithColor(col_, type_); }

    std::string description() const override;
    std::string className() const override { return "QzBBoxInfo"; }

private:
    QzBBoxInfo(Ref<NSColor> color, int32_t type) : col_(std::move(color)), type_(type) {}

    const Ref<NSColor> col_;
    const int32_t type_;
};

}  // namespace qz
