#pragma once

#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// An immutable array. Two arrays are equal if they hold equal elements in the same order.
class NSArray final : public ObjectHolder {
public:
    /// The empty array.
    static Ref<NSArray> array();
    /// Elements should not be null; use `NSNull` instead. Null elements are lost in archives, and property lists refuse
    /// them.
    static Ref<NSArray> arrayWithObjects(std::vector<Ref<NSObject>> elements);

    /// The number of elements.
    size_t count() const { return elements_.size(); }
    /// Valid as long as the array lives.
    const std::vector<Ref<NSObject>>& elements() const { return elements_; }
    /// Returns null if the index is out of range.
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
