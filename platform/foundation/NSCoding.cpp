#include "QzAnno/platform/foundation/NSCoding.h"

#include <map>

#include "QzAnno/platform/foundation/NSLog.h"

namespace qz {
namespace {

using Registry = std::map<std::string_view, const CodedClass*>;

// Made by the first registration. Neither it nor the classes are ever freed, since objects with static lifetime may
// still be encoded while others are destroyed.
Registry& registry() {
    static const CodedClass root{.name = "NSObject", .superclassName = ""};
    static Registry& registry = *new Registry{{root.name, &root}};
    return registry;
}

void enter(std::string_view name, const CodedClass* codedClass) {
    if (registry().emplace(name, codedClass).second) return;
    NSStandardError("The coded form of %@ is registered twice; the first one is kept\n", {name});
}

}  // namespace

CodedClassRegistration::CodedClassRegistration(CodedClass codedClass) {
    const CodedClass* const kept = new CodedClass(std::move(codedClass));
    enter(kept->name, kept);
    for (const std::string_view alias : kept->aliases) enter(alias, kept);
}

const CodedClass* codedClassNamed(std::string_view name) {
    const auto found = registry().find(name);
    return found == registry().end() ? nullptr : found->second;
}

}  // namespace qz
