#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Immutable bytes. Two are equal if their bytes are.
class NSData final : public NSObject {
public:
    /// Empty data.
    static Ref<NSData> data();
    /// Takes the vector, or copies the view's bytes.
    ///@{
    static Ref<NSData> dataWithBytes(std::vector<uint8_t> bytes);
    static Ref<NSData> dataWithBytes(std::string_view bytes);
    ///@}

    /// In bytes.
    size_t length() const { return bytes_.size(); }
    /// Valid as long as the data lives.
    const std::vector<uint8_t>& bytes() const { return bytes_; }
    /// The bytes as characters; valid as long as the data lives.
    std::string_view view() const { return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()}; }

    bool isEqual(const NSObject& other) const override;
    size_t hash() const override;
    std::string description() const override;
    std::string className() const override { return "NSData"; }

private:
    explicit NSData(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

    const std::vector<uint8_t> bytes_;
};

}  // namespace qz
