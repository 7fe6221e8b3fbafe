#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace qz {
namespace {

// The size, one more than the last position, must fit 32 bits.
constexpr uint64_t kPositionMax = std::numeric_limits<uint32_t>::max() - 1;

constexpr uint64_t kEveryByte = 0x0101010101010101;

/// Whether the eight positions are all set, or all clear; bytes that are neither '0' nor '1' count as clear.
bool eightAre(bool set, const char* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    const uint64_t difference = word ^ (kEveryByte * '1');
    if (set) return difference == 0;
    // A set position is a zero byte of the difference; the expression is 0 if there is no zero byte.
    return ((difference - kEveryByte) & ~difference & (kEveryByte * 0x80)) == 0;
}

}  // namespace

Ref<QzAnnoBits> QzAnnoBits::init() {
    return Ref<QzAnnoBits>(new QzAnnoBits(std::vector<char>(kInitialSize, '0')));
}

Ref<QzAnnoBits> QzAnnoBits::initWithBytes(std::string_view bytes) {
    if (bytes.size() > kPositionMax + 1) return {};
    return Ref<QzAnnoBits>(new QzAnnoBits({bytes.begin(), bytes.end()}));
}

void QzAnnoBits::reserve(uint64_t positions) const {
    if (positions <= bits_.capacity() || positions > kPositionMax + 1) return;
    bits_.reserve(std::max<uint64_t>(positions, 2 * uint64_t{bits_.capacity()}));
}

/// Makes the position exist; returns false if it cannot be held.
bool QzAnnoBits::cover(uint64_t position) const {
    if (position > kPositionMax) return false;
    if (position < bits_.size()) return true;
    const char last = bits_.empty() ? '0' : bits_.back();
    bits_.resize(position + 1, last);  // with the vector's geometric spare capacity
    knownStretchIsRun_ = false;
    return true;
}

/// Keeps what an edit leaves of the known stretch; of two pieces, the later one, which a walk reaches next.
void QzAnnoBits::trimKnownStretch(Range edited) {
    const Range overlap = intersection(knownStretch_, edited);
    knownStretchIsRun_ = false;
    if (overlap.length == 0) return;
    if (overlap.end() < knownStretch_.end()) {
        knownStretch_ = {overlap.location + overlap.length, static_cast<uint32_t>(knownStretch_.end() - overlap.end())};
    } else {
        knownStretch_.length = overlap.location - knownStretch_.location;
    }
}

void QzAnnoBits::fill(Range range, char byte) {
    if (!cover(range.end())) return;
    std::fill_n(bits_.data() + range.location, range.length, byte);
    trimKnownStretch(range);
}

void QzAnnoBits::setRange(Range range) {
    fill(range, '1');
}

void QzAnnoBits::clearRange(Range range) {
    fill(range, '0');
}

void QzAnnoBits::toggleRange(Range range) {
    if (!cover(range.end())) return;
    char* const first = bits_.data() + range.location;
    std::transform(first, first + range.length, first, [](char byte) { return byte == '1' ? '0' : '1'; });
    trimKnownStretch(range);
}

void QzAnnoBits::insertRange(Range range) {
    const uint64_t oldSize = size();
    if (range.end() > kPositionMax || !cover(oldSize + range.length)) return;
    knownStretch_ = {};
    if (range.location < oldSize) {
        char* const first = bits_.data() + range.location;
        std::memmove(first + range.length, first, oldSize - range.location);
    }
    const bool previousIsSet = range.location > 0 && getValueAtIndex(range.location - 1);
    fill(range, previousIsSet ? '1' : '0');
}

void QzAnnoBits::removeRange(Range range) {
    if (!cover(range.end())) return;
    char* const first = bits_.data() + range.location;
    std::memmove(first, first + range.length, bits_.size() - range.end());
    knownStretch_ = {};
}

void QzAnnoBits::copyBits(const QzAnnoBits& other, Range toRange) {
    // The other set gets one more position, so first check that it can hold it.
    if (toRange.end() + 1 > kPositionMax) return;
    cover(toRange.end());
    other.cover(toRange.end() + 1);
    // A set may be copied within itself.
    if (toRange.length > 0) std::memmove(bits_.data() + toRange.location, other.bits_.data(), toRange.length);
    trimKnownStretch(toRange);
}

Ref<QzAnnoBits> QzAnnoBits::annoSubbitsFromRange(Range range) const {
    if (!cover(range.end())) return {};
    return initWithBytes(bytes().substr(range.location, range.length));
}

Ref<QzAnnoBits> QzAnnoBits::copy() const {
    Ref<QzAnnoBits> copy = initWithBytes(bytes());
    cover(size());
    return copy;
}

bool QzAnnoBits::findValueAtIndex(uint32_t index, Range* effectiveRange) const {
    if (!cover(uint64_t{index} + 1)) return false;
    if (effectiveRange) {
        if (!knownStretch_.contains(index)) {
            knownStretch_ = {index, 1};
            knownStretchIsRun_ = false;
        }
        if (!knownStretchIsRun_) extendKnownStretch();
        *effectiveRange = knownStretch_;
    }
    return isSet(index);
}

bool QzAnnoBits::equalToAnnoBits(const QzAnnoBits& other, Range inRange) const {
    if (inRange.end() + 1 > kPositionMax) return inRange.length == 0;
    cover(inRange.end());
    other.cover(inRange.end() + 1);
    return bytes().substr(inRange.location, inRange.length) == other.bytes().substr(inRange.location, inRange.length);
}

/// Makes a run of the known stretch, which is not empty.
void QzAnnoBits::extendKnownStretch() const {
    const bool set = isSet(knownStretch_.location);
    uint32_t start = knownStretch_.location;
    while (start >= 8 && eightAre(set, bits_.data() + start - 8)) start -= 8;
    while (start > 0 && isSet(start - 1) == set) --start;
    const uint32_t end = endOfRun(knownStretch_.location + knownStretch_.length - 1);
    knownStretch_ = {start, end - start};
    knownStretchIsRun_ = true;
}

uint32_t QzAnnoBits::endOfRun(uint32_t index) const {
    const bool set = isSet(index);
    uint32_t end = index + 1;
    while (size() - end >= 8 && eightAre(set, bits_.data() + end)) end += 8;
    while (end < size() && isSet(end) == set) ++end;
    return end;
}

std::string QzAnnoBits::description() const {
    std::string text;
    for (uint32_t start = 0, end = 0; start < size(); start = end) {
        end = endOfRun(start);
        if (!isSet(start)) continue;
        text += (text.empty() ? "" : ", ") + std::to_string(start) + "-";
        if (end < size()) text += std::to_string(end);
    }
    return text.empty() ? "none" : text;
}

}  // namespace qz
