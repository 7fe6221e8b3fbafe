#pragma once

#include <memory>

#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSString.h"

namespace qz {

/// What an observer receives.
struct NSNotification {
    /// The name it was posted under; may be null.
    Ref<NSString> name;
    /// The object that the notification is about; may be null.
    Ref<NSObject> object;
    /// May be null.
    Ref<NSDictionary> userInfo;
};

/// Delivers notifications synchronously, on the posting thread, in the order in which the observers were added.
///
/// Observers may be added and removed from any thread and from within a handler: one removed during a delivery is no
/// longer called, one added during it is not called yet. The centre owns neither observers nor objects; an observer
/// must remove its observations before it is destroyed.
class NSNotificationCenter {
public:
    /// Called for each matching notification. An exception passes through to the poster, and the remaining observers
    /// are not called.
    using Handler = Callback<void(const NSNotification&)>;

    /// Has no observers.
    NSNotificationCenter();
    ~NSNotificationCenter();

    /// The process-wide centre, which outlives every object.
    static NSNotificationCenter& defaultCenter();

    /// `observer` only identifies the observation. A null name matches every notification; a null object, any object.
    /// An empty handler is refused with a log line.
    void addObserver(const void* observer, Handler handler, Ref<NSString> name, const NSObject* object);
    /// Removes the observations of `observer` that were added with this name and object; null matches any.
    void removeObserver(const void* observer, const Ref<NSString>& name = {}, const NSObject* object = nullptr);

    /// Returns after every observer has been called. A notification without a name reaches only observers of every
    /// name.
    void postNotificationName(const Ref<NSString>& name, const Ref<NSObject>& object, Ref<NSDictionary> userInfo = {});

private:
    struct Observations;
    const std::unique_ptr<Observations> observations_;
};

}  // namespace qz
