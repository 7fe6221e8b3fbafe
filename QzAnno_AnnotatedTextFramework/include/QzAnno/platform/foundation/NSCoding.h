#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class NSArchiver;
class NSUnarchiver;

/// How objects of one class are written to a typed stream and read back. The names must live as long as the process, as
/// literals do.
///
/// A class is read in one of two ways. `decode` makes the finished object; it refuses an object that refers to itself
/// through others. `allocate` and `fill` make an empty object first, which objects inside it can refer to; such
/// references back must not own it, or the cycle would never be freed.
struct CodedClass {
    /// As `className()` returns it.
    std::string_view name;
    /// Written into the class record. `NSUnarchiver::versionForClassName` returns the version in a stream.
    int32_t version = 0;
    /// Must be registered too, or writing an object fails.
    std::string_view superclassName = "NSObject";
    /// Writes the object's groups, those of its superclasses first. Null for a class that appears only as a superclass.
    void (*encode)(const NSObject& object, NSArchiver& archiver) = nullptr;
    /// Reads the groups and returns the object, or a substitute that references to the coded object will also get. Null
    /// without a failure of the unarchiver means "no object", and unread groups are skipped. Returning an object but
    /// leaving groups unread is a failure.
    Ref<NSObject> (*decode)(NSUnarchiver& unarchiver) = nullptr;
    /// Makes the empty object for `fill`; never null. Not called if there is a `decode`.
    Ref<NSObject> (*allocate)() = nullptr;
    /// False means "no object", as null does for `decode`; references read by then keep the empty object.
    bool (*fill)(NSObject& object, NSUnarchiver& unarchiver) = nullptr;
    /// Other names that streams use for the class ("NSMutableString").
    std::vector<std::string_view> aliases = {};
};

/// Makes a class known to every archiver and unarchiver. Define one static object of this type in the source file with
/// the coded form. Registering a name twice is a bug.
class CodedClassRegistration {
public:
    /// Registers the name and the aliases. A name that is taken stays with its first class, and a line on standard
    /// error says so. Do not call while another thread encodes or decodes.
    explicit CodedClassRegistration(CodedClass codedClass);
};

/// Returns null if no class has that name or alias. "NSObject" is always registered.
const CodedClass* codedClassNamed(std::string_view name);

}  // namespace qz
