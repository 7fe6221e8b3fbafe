#pragma once

#include <memory>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// What an observer receives.
struct NSNotification {
    /// As posted; none when it was posted without one.
    Ref<NSString> name;
    /// The object that the notification is about; may be none.
    Ref<NSObject> object;
    /// May be none.
    Ref<NSDictionary> userInfo;
};

/// Delivers notifications synchronously, on the posting thread, in the order in which the observers were added.
///
/// Observers may be added and removed from any thread and from within a handler: one removed during a delivery is not
/// called any more, one added during it is not called yet. The centre owns neither observers nor objects; whoever
/// observes removes its observations before it dies.
class NSNotificationCenter {
public:
    /// Called for each notification that matches its observation. What it throws passes through to the poster, and the
    /// later observers are not called.
    using Handler = Callback<void(const NSNotification&)>;

    /// Without observers.
    NSNotificationCenter();
    ~NSNotificationCenter();

    /// That of the process, which outlives every object.
    static NSNotificationCenter& defaultCenter();

    /// `observer` only identifies the observation. Without a name it is told of every notification; without an object,
    /// of those from any object. An empty handler is refused with a log line.
    void addObserver(const void* observer, Handler handler, Ref<NSString> name, const NSObject* object);
    /// Removes the observations of `observer` that were added with this name and object; none of them stands for any.
    void removeObserver(const void* observer, const Ref<NSString>& name = {}, const NSObject* object = nullptr);

    /// Returns when every observer has been called. Without a name it reaches those alone that observe any.
    void postNotificationName(const Ref<NSString>& name, const Ref<NSObject>& object, Ref<NSDictionary> userInfo = {});

private:
    struct Observations;
    const std::unique_ptr<Observations> observations_;
};

}  // namespace qz
