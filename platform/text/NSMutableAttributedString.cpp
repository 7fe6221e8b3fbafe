#include <algorithm>
#include <limits>
#include <new>
#include <unordered_map>

#include "QzAnno/platform/text/NSAttributedString.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

// The narrowest counters of text are signed 32-bit.
void checkLength(uint64_t length) {
    if (length > std::numeric_limits<int32_t>::max()) throw std::bad_alloc();
}

/// Reserves memory for this many runs, with spare capacity.
template <class Runs>
void makeRoomForRuns(Runs& runs, size_t count) {
    if (count > runs.capacity()) runs.reserve(std::max(count, 2 * runs.capacity()));
}

}  // namespace

Ref<NSMutableAttributedString> NSMutableAttributedString::init() {
    return Ref<NSMutableAttributedString>(new NSMutableAttributedString());
}

Ref<NSMutableAttributedString> NSMutableAttributedString::initWithAttributedString(const NSAttributedString& other) {
    Ref<NSMutableAttributedString> string = init();
    string->setAttributedString(other);
    return string;
}

void NSMutableAttributedString::edited(Range, int64_t, bool) {}

void NSMutableAttributedString::setAttributedString(const NSAttributedString& other) {
    replaceCharactersInRange({0, length()}, other);
}

void NSMutableAttributedString::appendAttributedString(const NSAttributedString& other) {
    replaceCharactersInRange({length(), 0}, other);
}

void NSMutableAttributedString::appendString(std::u16string_view characters, Ref<NSDictionary> attributes) {
    if (characters.empty()) return;
    checkLength(uint64_t{length()} + characters.size());
    if (!attributes) attributes = NSDictionary::dictionary();
    const uint32_t start = length();
    // Allocate first: once the characters are added, adding their run must not fail.
    makeRoomForRuns(runs_, runs_.size() + 1);
    characters_ += characters;
    if (!runs_.empty() && runs_.back().attributes == attributes)
        runs_.back().end = length();
    else
        runs_.push_back({length(), std::move(attributes)});
    edited({start, length() - start}, length() - start, true);
}

void NSMutableAttributedString::replaceRuns(Range range, std::vector<Run> runs, int64_t growth) {
    const size_t first = runIndexAt(range.location);
    const size_t next = runIndexAt(static_cast<uint32_t>(range.end()));
    std::vector<Run> replacement;
    replacement.reserve(runs.size() + 1);
    const auto add = [&](uint32_t end, Ref<NSDictionary> attributes) {
        if (!replacement.empty() && replacement.back().attributes == attributes)
            replacement.back().end = end;
        else
            replacement.push_back({end, std::move(attributes)});
    };
    // Keep the part of the first run before the range; the part of the last run after it stays in place as the run's
    // rest.
    if (startOfRun(first) < range.location)
        add(range.location, runs_[first].attributes);
    else if (first > 0)
        add(range.location, runs_[first - 1].attributes);
    const size_t erasedFrom = startOfRun(first) < range.location || first == 0 ? first : first - 1;
    for (Run& run : runs) add(run.end, std::move(run.attributes));
    if (next < runs_.size() && !replacement.empty() && replacement.back().attributes == runs_[next].attributes) {
        replacement.pop_back();
    }

    makeRoomForRuns(runs_, runs_.size() + erasedFrom - next + replacement.size());
    if (growth != 0) {
        for (size_t run = next; run < runs_.size(); ++run) {
            runs_[run].end = static_cast<uint32_t>(runs_[run].end + growth);
        }
    }
    const auto at = runs_.erase(runs_.begin() + static_cast<std::ptrdiff_t>(erasedFrom),
                                runs_.begin() + static_cast<std::ptrdiff_t>(next));
    runs_.insert(at, std::make_move_iterator(replacement.begin()), std::make_move_iterator(replacement.end()));
}

bool NSMutableAttributedString::replaceCharactersInRange(Range range, const NSAttributedString& withAttributedString) {
    if (range.end() > length()) return false;
    if (&withAttributedString == this) return replaceCharactersInRange(range, *copy());
    const uint32_t added = withAttributedString.length();
    if (range.length == 0 && added == 0) return true;
    checkLength(uint64_t{length()} - range.length + added);

    // Allocate first: once the runs are replaced, replacing the characters must not fail.
    characters_.reserve(characters_.size() - range.length + added);
    std::vector<Run> runs = runsOf(withAttributedString);
    for (Run& run : runs) run.end += range.location;
    const int64_t growth = int64_t{added} - range.length;
    replaceRuns(range, std::move(runs), growth);
    characters_.replace(range.location, range.length, withAttributedString.characters());
    edited({range.location, added}, growth, true);
    return true;
}

bool NSMutableAttributedString::replaceCharactersInRange(Range range, const Ref<NSString>& withString) {
    if (range.end() > length()) return false;
    Ref<NSDictionary> attributes;
    if (length() > 0) {
        const uint32_t before = range.location > 0 ? range.location - 1 : 0;
        attributes = attributesAtIndex(range.length > 0 ? range.location : before);
    }
    return replaceCharactersInRange(range, *NSAttributedString::initWithString(withString, std::move(attributes)));
}

bool NSMutableAttributedString::deleteCharactersInRange(Range range) {
    return replaceCharactersInRange(range, *NSAttributedString::init());
}

bool NSMutableAttributedString::setAttributes(Ref<NSDictionary> attributes, Range range) {
    return changeAttributes(range, [&](const Ref<NSDictionary>&) { return attributes; });
}

bool NSMutableAttributedString::addAttribute(const Ref<NSString>& name, const Ref<NSObject>& value, Range range) {
    if (!name || !value) return false;
    ObjectMap map;
    map.set(name, value);
    return addAttributes(*NSDictionary::dictionaryWithMap(std::move(map)), range);
}

bool NSMutableAttributedString::addAttributes(const NSDictionary& attributes, Range range) {
    const bool setsFont = attributes.objectForKey(*NSFontAttributeName) != nullptr;
    const bool setsOriginalFont = attributes.objectForKey(*NSOriginalFontAttributeName) != nullptr;
    return changeAttributes(range, [&](const Ref<NSDictionary>& old) {
        ObjectMap map = old->map();
        if (setsFont && !setsOriginalFont) map.remove(*NSOriginalFontAttributeName);
        map.setAll(attributes.map());
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
}

bool NSMutableAttributedString::removeAttribute(const NSString& name, Range range) {
    return changeAttributes(range, [&](const Ref<NSDictionary>& old) {
        if (!old->objectForKey(name)) return old;
        ObjectMap map = old->map();
        map.remove(name);
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
}

bool NSMutableAttributedString::changeAttributes(Range range,
                                                 const Callback<Ref<NSDictionary>(const Ref<NSDictionary>&)>& change) {
    if (range.end() > length()) return false;
    if (range.length == 0) return true;
    // In formatted text, many runs share few dictionaries.
    std::unordered_map<const NSDictionary*, Ref<NSDictionary>> changed;
    std::vector<Run> runs;
    for (size_t run = runIndexAt(range.location); run < runs_.size() && startOfRun(run) < range.end(); ++run) {
        const Ref<NSDictionary>& old = runs_[run].attributes;
        Ref<NSDictionary>& attributes = changed[old.get()];
        if (!attributes) attributes = change(old);
        if (!attributes) attributes = NSDictionary::dictionary();
        runs.push_back({std::min(runs_[run].end, static_cast<uint32_t>(range.end())), attributes});
    }
    replaceRuns(range, std::move(runs));
    edited(range, 0, false);
    return true;
}

}  // namespace qz
