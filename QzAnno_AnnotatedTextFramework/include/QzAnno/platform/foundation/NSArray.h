#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable row of objects. Equal when both hold equal elements in the same order.
class NSArray final : public ObjectHolder {
public:
    /// The empty array.
    static Ref<NSArray> array();
    /// An element should be an object, `NSNull` where there is none: archives read back without the elements that are
    /// none, and property lists refuse them.
    static Ref<NSArray> arrayWithObjects(std::vector<Ref<NSObject>> elements);

    /// Indices run from 0 to below it.
    size_t count() const { return elements_.size(); }
    /// Never changed; they live as long as the array.
    const std::vector<Ref<NSObject>>& elements() const { return elements_; }
    /// The element; empty when the index lies beyond the last.
    Ref<NSObject> objectAtIndex(size_t index) const { return index < count() ? elements_[index] : Ref<NSObject>(); }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override { return elements_.size(); }
    std::string description() const override;
    std::string className() const override { return "NSArray"; }

private:
    explicit NSArray(std::vector<Ref<NSObject>> elements) : elements_(std::move(elements)) {}

    const std::vector<Ref<NSObject>> elements_;
};

}  // namespace qz
