#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// The keys of a log entry; each holds a string.

/// A short title.
inline const Ref<NSString> QzLogEntry_Name = "QzLogEntry_Name"_ns;
/// The message for the user; may have several lines.
inline const Ref<NSString> QzLogEntry_Message = "QzLogEntry_Message"_ns;
/// Identifies the kind of error for programs.
inline const Ref<NSString> QzLogEntry_Tag = "QzLogEntry_Tag"_ns;
/// The name of the object at fault.
inline const Ref<NSString> QzLogEntry_Cause = "QzLogEntry_Cause"_ns;
/// The step that found the error.
inline const Ref<NSString> QzLogEntry_Source = "QzLogEntry_Source"_ns;

/// The host's log of errors that the user should see.
class QzLog {
public:
    virtual ~QzLog() = default;
    /// Called for every occurrence of an error, during the work that encounters it and on its thread. The palette
    /// reports missing fonts with the tag "QZA_NOFONT".
    virtual void logError(const NSDictionary& entry) = 0;
};

/// An object that reports errors to a host's log.
class QzLogUsing {
public:
    virtual ~QzLogUsing() = default;
    /// Sets the log, which is not owned. Entries are dropped if it is null or has been destroyed.
    virtual void setLog(const Ref<QzLog>& log) = 0;
};

}  // namespace qz
