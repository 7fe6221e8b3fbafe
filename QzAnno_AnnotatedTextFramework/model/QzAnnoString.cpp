#include "QzAnno/model/QzAnnoString.h"

#include <algorithm>
#include <unordered_map>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/model/MutableSupport.h"
#include "QzAnno_AnnotatedTextFramework/model/QzAnnoBits.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

using Entry = ObjectMap::Entry;

// `MutableSupport::setAnnotations` accepts nothing else.
const QzAnnoBits& bitsOf(const Entry& entry) {
    return static_cast<const QzAnnoBits&>(*entry.value);
}

bool haveEqualRuns(const QzAnnoBits& a, const QzAnnoBits& b, uint32_t textLength) {
    Range runOfA, runOfB;
    for (uint32_t i = 0; i < textLength; i = runOfA.location + runOfA.length) {
        const bool value = a.getValueAtIndex(i, &runOfA, textLength);
        if (b.getValueAtIndex(i, &runOfB, textLength) != value || runOfA != runOfB) return false;
    }
    return true;
}

}  // namespace

QzAnnoString::QzAnnoString(const Ref<NSString>& string)
    : annotations_(NSDictionary::dictionary()), s_(string ? string : NSString::string()) {}

Ref<QzAnnoString> QzAnnoString::init() {
    return initWithString({});
}

Ref<QzAnnoString> QzAnnoString::initWithString(const Ref<NSString>& string) {
    return Ref<QzAnnoString>(new QzAnnoString(string));
}

Ref<QzAnnoString> QzAnnoString::initWithAnnoString(const QzAnnoString& other) {
    Ref<QzAnnoString> copy = initWithString(other.s_);
    MutableSupport::setAnnotations(*copy, other.annotations_, true);
    return copy;
}

Ref<QzMutableAnnoString> QzAnnoString::mutableCopy() const {
    return QzMutableAnnoString::initWithAnnoString(*this);
}

Ref<const QzAnnoBits> QzAnnoString::bitsFor(const Ref<QzAnnoKey>& key) const {
    return key ? rowOf(*key) : nullptr;
}

Ref<NSSet> QzAnnoString::allKeys() const {
    return keysHolding(std::vector<bool>(annotations_->count(), true));
}

Ref<NSSet> QzAnnoString::frame() const {
    std::vector<bool> holding;
    for (const Entry& entry : annotations_->map().entries()) {
        Range run;
        holding.push_back(length() > 0 && bitsOf(entry).getValueAtIndex(0, &run, length()) && run.length == length());
    }
    return keysHolding(holding);
}

bool QzAnnoString::annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* effectiveRange) const {
    if (atIndex >= length()) return false;
    if (const Ref<const QzAnnoBits> bits = bitsFor(key))
        return bits->getValueAtIndex(atIndex, effectiveRange, length());
    if (effectiveRange) *effectiveRange = {0, length()};
    return false;
}

bool QzAnnoString::annotation(const Ref<QzAnnoKey>& key, uint32_t atIndex, Range* longestEffectiveRange,
                              Range inRange) const {
    if (!inRange.contains(atIndex) || inRange.end() > length()) return false;
    Range run;
    const bool value = annotation(key, atIndex, &run);
    if (longestEffectiveRange) *longestEffectiveRange = intersection(run, inRange);
    return value;
}

Ref<NSSet> QzAnnoString::annotationsAtIndex(uint32_t index, Range* effectiveRange) const {
    return annotationsAtIndex(index, effectiveRange, {0, length()});
}

Ref<NSSet> QzAnnoString::annotationsAtIndex(uint32_t index, Range* longestEffectiveRange, Range inRange) const {
    if (!inRange.contains(index) || inRange.end() > length()) return {};
    std::vector<bool> holding;
    const Range run = statesAt(index, inRange, longestEffectiveRange != nullptr, holding);
    if (longestEffectiveRange) *longestEffectiveRange = run;
    return keysHolding(holding);
}

std::vector<QzAnnoString::Run> QzAnnoString::runs() const {
    std::vector<Run> runs;
    std::unordered_map<std::vector<bool>, Ref<NSSet>> sets;
    const std::vector<Entry>& entries = annotations_->map().entries();
    std::vector<bool> holding(entries.size());
    // The end of each key's run. Only keys whose run has ended are queried again.
    std::vector<uint32_t> ends(entries.size(), 0);
    for (uint32_t start = 0; start < length();) {
        uint32_t end = length();
        for (size_t k = 0; k < entries.size(); ++k) {
            if (ends[k] == start) {
                Range run;
                holding[k] = bitsOf(entries[k]).getValueAtIndex(start, &run, length());
                ends[k] = static_cast<uint32_t>(run.end());
            }
            end = std::min(end, ends[k]);
        }
        Ref<NSSet>& keys = sets[holding];
        if (!keys) keys = keysHolding(holding);
        runs.push_back({{start, end - start}, keys});
        start = end;
    }
    return runs;
}

/// Fills `holding` with whether each key, in the dictionary's order, holds at the index. Returns the part of `limit`
/// around the index in which no key changes, or all of `limit` without `withRange`.
Range QzAnnoString::statesAt(uint32_t index, Range limit, bool withRange, std::vector<bool>& holding) const {
    holding.clear();
    Range common = limit;
    for (const Entry& entry : annotations_->map().entries()) {
        Range run;
        holding.push_back(bitsOf(entry).getValueAtIndex(index, withRange ? &run : nullptr, length()));
        if (withRange) common = intersection(common, run);
    }
    return common;
}

Ref<NSSet> QzAnnoString::keysHolding(const std::vector<bool>& holding) const {
    ObjectMap keys;
    for (size_t i = 0; i < holding.size(); ++i) {
        if (holding[i]) keys.set(annotations_->map().entries()[i].key, nullptr);
    }
    return keys.empty() ? NSSet::set() : NSSet::setWithMap(std::move(keys));
}

Ref<QzAnnoString> QzAnnoString::annoSubstringFromRange(Range range) const {
    const Ref<NSString> text = s_->substringWithRange(range);
    if (!text) return {};
    ObjectMap entries;
    for (const Entry& entry : annotations_->map().entries()) {
        entries.set(entry.key, bitsOf(entry).annoSubbitsFromRange(range));
    }
    Ref<QzAnnoString> substring = initWithString(text);
    substring->annotations_ = NSDictionary::dictionaryWithMap(std::move(entries));
    return substring;
}

// Equal keys with equal runs imply equal frames.
bool QzAnnoString::isEqualToAnnoString(const QzAnnoString& other) const {
    if (annotations_->count() != other.annotations_->count() || !s_->isEqual(*other.s_)) return false;
    return std::ranges::all_of(annotations_->map().entries(), [&](const Entry& entry) {
        const Ref<NSObject> bits = other.annotations_->objectForKey(*entry.key);
        return bits && haveEqualRuns(bitsOf(entry), static_cast<const QzAnnoBits&>(*bits), length());
    });
}

bool QzAnnoString::isEqual(const NSObject& other) const {
    const auto* string = dynamic_cast<const QzAnnoString*>(&other);
    return string && isEqualToAnnoString(*string);
}

std::string QzAnnoString::description() const {
    std::string frameKeys;
    const Ref<NSSet> frame = this->frame();
    for (const Entry& entry : frame->map().entries()) {
        frameKeys += (frameKeys.empty() ? "" : ",") + entry.key->description();
    }
    std::string text = s_->utf8() + "\n Frame-wide annotations: " + (frameKeys.empty() ? "none" : frameKeys) + "\n";
    for (const Entry& entry : annotations_->map().entries()) {
        text += " \t" + entry.key->description() + ": " + entry.value->description() + "\n";
    }
    return text;
}

Ref<QzAnnoBits> QzAnnoString::rowOf(const NSObject& key) const {
    return annotations_->objectForKey<QzAnnoBits>(key);
}

}  // namespace qz
