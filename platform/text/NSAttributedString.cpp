#include "QzAnno/platform/text/NSAttributedString.h"

#include <algorithm>

namespace qz {

NSAttributedString::NSAttributedString(std::u16string characters, std::vector<Run> runs)
    : characters_(std::move(characters)), runs_(std::move(runs)) {}

Ref<NSAttributedString> NSAttributedString::init() {
    return Ref<NSAttributedString>(new NSAttributedString());
}

Ref<NSAttributedString> NSAttributedString::initWithString(const Ref<NSString>& string, Ref<NSDictionary> attributes) {
    if (!string || string->length() == 0) return init();
    if (!attributes) attributes = NSDictionary::dictionary();
    return Ref<NSAttributedString>(
        new NSAttributedString(string->characters(), {{string->length(), std::move(attributes)}}));
}

Ref<NSString> NSAttributedString::string() const {
    return NSString::stringWithCharacters(characters_);
}

size_t NSAttributedString::runIndexAt(uint32_t index) const {
    const auto run = std::ranges::upper_bound(runs_, index, {}, &Run::end);
    return static_cast<size_t>(run - runs_.begin());
}

Ref<NSDictionary> NSAttributedString::attributesAtIndex(uint32_t index, Range* effectiveRange) const {
    if (index >= length()) return {};
    const size_t run = runIndexAt(index);
    if (effectiveRange) *effectiveRange = {startOfRun(run), runs_[run].end - startOfRun(run)};
    return runs_[run].attributes;
}

namespace {

/// The stretch of text of the runs around `run` that are like it, without searching beyond `within`.
template <class Runs, class IsAlike>
Range stretchAround(const Runs& runs, size_t run, Range within, const IsAlike& isAlike) {
    size_t first = run;
    while (first > 0 && runs[first - 1].end > within.location && isAlike(runs[first - 1])) --first;
    size_t last = run;
    while (last + 1 < runs.size() && runs[last].end < within.end() && isAlike(runs[last + 1])) ++last;
    const uint32_t start = first == 0 ? 0 : runs[first - 1].end;
    return intersection({start, runs[last].end - start}, within);
}

}  // namespace

Ref<NSDictionary> NSAttributedString::attributesAtIndex(uint32_t index, Range* longestEffectiveRange,
                                                        Range inRange) const {
    if (index >= length() || !inRange.contains(index)) return {};
    const size_t run = runIndexAt(index);
    const Ref<NSDictionary>& attributes = runs_[run].attributes;
    if (longestEffectiveRange) {
        *longestEffectiveRange = stretchAround(
            runs_, run, inRange, [&](const Run& other) { return areEqual(other.attributes, attributes); });
    }
    return attributes;
}

Ref<NSObject> NSAttributedString::attribute(const NSString& name, uint32_t atIndex, Range* longestEffectiveRange,
                                            Range inRange) const {
    if (atIndex >= length() || !inRange.contains(atIndex)) return {};
    const size_t run = runIndexAt(atIndex);
    const Ref<NSDictionary>& attributes = runs_[run].attributes;
    const Ref<NSObject> value = attributes->objectForKey(name);
    if (longestEffectiveRange) {
        *longestEffectiveRange = stretchAround(runs_, run, inRange, [&](const Run& other) {
            return other.attributes == attributes || areEqual(other.attributes->objectForKey(name), value);
        });
    }
    return value;
}

Ref<NSAttributedString> NSAttributedString::attributedSubstringFromRange(Range range) const {
    if (range.end() > length()) return {};
    std::vector<Run> runs;
    for (size_t run = runIndexAt(range.location); run < runs_.size() && startOfRun(run) < range.end(); ++run) {
        const auto end = std::min<uint64_t>(runs_[run].end, range.end());
        runs.push_back({static_cast<uint32_t>(end) - range.location, runs_[run].attributes});
    }
    if (range.length == 0) runs.clear();
    return Ref<NSAttributedString>(
        new NSAttributedString(characters_.substr(range.location, range.length), std::move(runs)));
}

Ref<NSAttributedString> NSAttributedString::copy() const {
    return Ref<NSAttributedString>(new NSAttributedString(characters_, runs_));
}

bool NSAttributedString::isEqual(const NSObject& other) const {
    if (this == &other) return true;
    const auto* string = dynamic_cast<const NSAttributedString*>(&other);
    if (!string || characters_ != string->characters_) return false;
    for (size_t mine = 0, theirs = 0; mine < runs_.size();) {
        const Run& a = runs_[mine];
        const Run& b = string->runs_[theirs];
        if (!areEqual(a.attributes, b.attributes)) return false;
        if (a.end <= b.end) ++mine;
        if (b.end <= a.end) ++theirs;
    }
    return true;
}

size_t NSAttributedString::hash() const {
    return std::hash<std::u16string>()(characters_);
}

std::string NSAttributedString::description() const {
    std::string text;
    for (size_t run = 0; run < runs_.size(); ++run) {
        const uint32_t start = startOfRun(run);
        text += utf8FromUtf16(std::u16string_view(characters_).substr(start, runs_[run].end - start));
        text += runs_[run].attributes->description();
    }
    return text;
}

}  // namespace qz
