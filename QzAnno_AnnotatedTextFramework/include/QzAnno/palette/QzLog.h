#pragma once

#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

// The keys of a log entry; each holds a string.

/// A short title.
inline const Ref<NSString> QzLogEntry_Name = "QzLogEntry_Name"_ns;
/// What to tell a person; may have several lines.
inline const Ref<NSString> QzLogEntry_Message = "QzLogEntry_Message"_ns;
/// Identifies the kind of error to programs.
inline const Ref<NSString> QzLogEntry_Tag = "QzLogEntry_Tag"_ns;
/// The name of the thing at fault.
inline const Ref<NSString> QzLogEntry_Cause = "QzLogEntry_Cause"_ns;
/// The step that found it.
inline const Ref<NSString> QzLogEntry_Source = "QzLogEntry_Source"_ns;

/// The host's log of errors that a person should see.
class QzLog {
public:
    virtual ~QzLog() = default;
    /// Called on the thread, and in the midst, of the work that met the error, which does not wait for an answer; once
    /// for every time that it is met. The palette reports fonts that are missing, with the tag "QZA_NOFONT".
    virtual void logError(const NSDictionary& entry) = 0;
};

/// Something that reports errors to a host's log.
class QzLogUsing {
public:
    virtual ~QzLogUsing() = default;
    /// The log is not owned; once it is gone, or with none, entries are dropped.
    virtual void setLog(const Ref<QzLog>& log) = 0;
};

}  // namespace qz
