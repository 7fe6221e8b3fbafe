#include "QzAnno_AnnotatedTextFramework/ui/KeySets.h"

#include "QzAnno/palette/AttributeNames.h"
#include "platform/foundation/ObjectMap.h"

namespace qz {
namespace {

const ObjectMap& membersOf(const Ref<NSSet>& set) {
    static const ObjectMap none;
    return set ? set->map() : none;
}

Ref<NSSet> membersThatAre(bool contained, const Ref<NSSet>& a, const Ref<NSSet>& b) {
    ObjectMap members;
    for (const ObjectMap::Entry& entry : membersOf(a).entries()) {
        if (membersOf(b).contains(*entry.key) == contained) members.set(entry.key, nullptr);
    }
    return NSSet::setWithMap(std::move(members));
}

}  // namespace

Ref<NSSet> unionOf(const Ref<NSSet>& a, const Ref<NSSet>& b) {
    ObjectMap members = membersOf(a);
    members.setAll(membersOf(b));
    return NSSet::setWithMap(std::move(members));
}

Ref<NSSet> intersectionOf(const Ref<NSSet>& a, const Ref<NSSet>& b) {
    return membersThatAre(true, a, b);
}

Ref<NSSet> difference(const Ref<NSSet>& a, const Ref<NSSet>& b) {
    return membersThatAre(false, a, b);
}

void forEachAnnoRun(const NSAttributedString& text, Range range,
                    const std::function<void(Range run, const Ref<NSSet>& list)>& visit) {
    Range run = {range.location, 0};
    while (run.end() < range.end()) {
        const Ref<NSObject> list = text.attribute(*QzAnnoAttributeName, static_cast<uint32_t>(run.end()), &run, range);
        visit(run, std::dynamic_pointer_cast<NSSet>(list));
    }
}

}  // namespace qz
