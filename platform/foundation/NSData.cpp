#include "QzAnno/platform/foundation/NSData.h"

#include <functional>

namespace qz {

Ref<NSData> NSData::data() {
    return dataWithBytes(std::vector<uint8_t>());
}

Ref<NSData> NSData::dataWithBytes(std::vector<uint8_t> bytes) {
    return Ref<NSData>(new NSData(std::move(bytes)));
}

Ref<NSData> NSData::dataWithBytes(std::string_view bytes) {
    return dataWithBytes(std::vector<uint8_t>(bytes.begin(), bytes.end()));
}

bool NSData::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* data = dynamic_cast<const NSData*>(&other);
    return data && bytes_ == data->bytes_;
}

size_t NSData::hash() const {
    return std::hash<std::string_view>()(view());
}

std::string NSData::description() const {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text = "<";
    for (size_t i = 0; i < bytes_.size(); ++i) {
        if (i > 0 && i % 4 == 0) text += ' ';
        text += digits[bytes_[i] >> 4];
        text += digits[bytes_[i] & 15];
    }
    return text + ">";
}

}  // namespace qz
