#include "platform/text/TemporaryAttributes.h"

#include <algorithm>
#include <limits>

#include "platform/foundation/ObjectMap.h"

namespace qz {

std::vector<TemporaryAttributes::Run>::iterator TemporaryAttributes::cutAt(uint32_t position) {
    auto run = std::ranges::upper_bound(runs_, position, {}, [](const Run& other) { return other.range.end(); });
    if (run == runs_.end() || run->range.location >= position) return run;
    Run rest = *run;
    run->range.length = position - run->range.location;
    rest.range = {position, rest.range.length - run->range.length};
    return runs_.insert(run + 1, std::move(rest));
}

void TemporaryAttributes::change(Range range, const Change& change) {
    if (range.length == 0) return;
    const auto end = static_cast<uint32_t>(std::min<uint64_t>(range.end(), std::numeric_limits<uint32_t>::max()));
    cutAt(range.location);
    cutAt(end);
    const auto first = cutAt(range.location);
    const auto last = cutAt(end);
    std::vector<Run> changed;
    uint32_t position = range.location;
    const auto add = [&](uint32_t to, const Ref<NSDictionary>& attributes) {
        const Ref<NSDictionary> made = position < to ? change(attributes) : nullptr;
        if (made && made->count() > 0) changed.push_back({{position, to - position}, made});
        position = to;
    };
    for (auto run = first; run != last; ++run) {
        add(run->range.location, NSDictionary::dictionary());
        add(static_cast<uint32_t>(run->range.end()), run->attributes);
    }
    add(end, NSDictionary::dictionary());
    const auto at = runs_.erase(first, last);
    runs_.insert(at, changed.begin(), changed.end());
}

void TemporaryAttributes::add(const NSDictionary& attributes, Range range) {
    change(range, [&](const Ref<NSDictionary>& old) {
        ObjectMap map = old->map();
        map.setAll(attributes.map());
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
}

void TemporaryAttributes::remove(const NSString& name, Range range) {
    change(range, [&](const Ref<NSDictionary>& old) {
        if (!old->objectForKey(name)) return old;
        ObjectMap map = old->map();
        map.remove(name);
        return NSDictionary::dictionaryWithMap(std::move(map));
    });
}

Ref<NSDictionary> TemporaryAttributes::attributesAtIndex(uint32_t index, Range* effectiveRange) const {
    const auto run = std::ranges::upper_bound(runs_, index, {}, [](const Run& other) { return other.range.end(); });
    if (run != runs_.end() && run->range.contains(index)) {
        if (effectiveRange) *effectiveRange = run->range;
        return run->attributes;
    }
    if (effectiveRange) {
        const uint64_t start = run == runs_.begin() ? 0 : std::prev(run)->range.end();
        const uint32_t end = run == runs_.end() ? std::numeric_limits<uint32_t>::max() : run->range.location;
        *effectiveRange = {static_cast<uint32_t>(start), static_cast<uint32_t>(end - start)};
    }
    static const Ref<NSDictionary> none = NSDictionary::dictionary();
    return none;
}

void TemporaryAttributes::textEdited(Range editedRange, int64_t changeInLength) {
    const auto oldEnd = static_cast<uint32_t>(static_cast<int64_t>(editedRange.end()) - changeInLength);
    cutAt(editedRange.location);
    cutAt(oldEnd);
    const auto first = cutAt(editedRange.location);
    const auto behind = runs_.erase(first, cutAt(oldEnd));
    for (auto run = behind; run != runs_.end(); ++run) {
        run->range.location = static_cast<uint32_t>(run->range.location + changeInLength);
    }
}

}  // namespace qz
