#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

class NSArchiver;
class NSUnarchiver;

/// How the objects of one class are written to a typed stream and read back. The names must live as long as the
/// process; literals do.
///
/// A class is read in one of two ways. `decode` makes the finished object; an object that refers to itself through
/// others is then refused. `allocate` and `fill` make an empty object first, to which objects inside it can refer; such
/// a class keeps these references without owning, or a cycle would never be freed.
struct CodedClass {
    /// What `className()` answers.
    std::string_view name;
    /// Written into the class record; `NSUnarchiver::versionForClassName` tells a stream's.
    int32_t version = 0;
    /// Of a registered class too, or writing an object fails.
    std::string_view superclassName = "NSObject";
    /// Writes the object's groups, those of its superclasses first. None for a class that stands in chains only.
    void (*encode)(const NSObject& object, NSArchiver& archiver) = nullptr;
    /// Reads the groups and returns the object, or another one to stand in its place: references to the coded object
    /// then get that. None without a failure of the unarchiver means "no object": groups left unread are passed over.
    /// An object whose groups are left unread is a failure.
    Ref<NSObject> (*decode)(NSUnarchiver& unarchiver) = nullptr;
    /// The empty object for `fill`, never none. Not called when there is a `decode`.
    Ref<NSObject> (*allocate)() = nullptr;
    /// False means "no object", as none does for `decode`; references met by then keep the empty one.
    bool (*fill)(NSObject& object, NSUnarchiver& unarchiver) = nullptr;
    /// Further names under which streams hold such objects ("NSMutableString").
    std::vector<std::string_view> aliases = {};
};

/// Makes a class known to every archiver and unarchiver. One static object of this type stands in the source file that
/// holds the coded form; a name that is taken is a bug.
class CodedClassRegistration {
public:
    /// Enters the name and the aliases. One that is taken stays with its first class, with a line on standard error.
    /// Not while another thread codes.
    explicit CodedClassRegistration(CodedClass codedClass);
};

/// The class of that name or alias; null when there is none. "NSObject" is always there.
const CodedClass* codedClassNamed(std::string_view name);

}  // namespace qz
