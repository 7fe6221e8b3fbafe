#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "QzAnno/platform/foundation/NSArchiver.h"

namespace qz::test {

/// An archive of one object of the class `className` with the groups written by `groups`, even if the class would never
/// write them. The class has version 0 and only the root as superclass.
inline Ref<NSData> codedAs(std::string_view className, const std::function<void(NSArchiver&)>& groups) {
    static const std::function<void(NSArchiver&)>* groupsToWrite = nullptr;
    class StandIn : public NSObject {
        std::string className() const override { return "NSStandIn"; }
    };
    static const CodedClassRegistration registration(
        {.name = "NSStandIn", .encode = [](const NSObject&, NSArchiver& archiver) { (*groupsToWrite)(archiver); }});
    groupsToWrite = &groups;
    const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(std::make_shared<StandIn>());
    const std::string_view name = "\x09NSStandIn";
    std::string bytes(data->view());
    bytes.replace(bytes.find(name), name.size(), static_cast<char>(className.size()) + std::string(className));
    return NSData::dataWithBytes(std::string_view(bytes));
}

}  // namespace qz::test
