#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Named properties that controls bind to. Observers are told before and after each change.
class NSKeyValueObserving {
public:
    /// How a property is read and set.
    struct Property {
        std::function<Ref<NSObject>()> get;                   ///< never empty
        std::function<void(const Ref<NSObject>& value)> set;  ///< empty if only the owner may set the property
    };
    /// Receives the name of the property that changes.
    using ChangeHandler = std::function<void(const std::string& key)>;

    virtual ~NSKeyValueObserving() = default;

    /// For a name without a property, the result of `valueForUndefinedKey`.
    Ref<NSObject> valueForKey(const std::string& key) const;
    /// Sets a property and tells the observers; returns false if no property of that name can be set.
    bool setValue(const Ref<NSObject>& value, const std::string& forKey);
    /// Logs a line and returns null.
    virtual Ref<NSObject> valueForUndefinedKey(const std::string& key) const;

    /// Call these around a change made without `setValue`. They tell the observers at once, in the order in which they
    /// were added.
    ///@{
    void willChangeValueForKey(const std::string& key);
    void didChangeValueForKey(const std::string& key);
    ///@}

    /// `observer` identifies the observation and must remove it before it is destroyed. Either handler may be empty.
    void addObserver(const void* observer, ChangeHandler willChange, ChangeHandler didChange);
    /// Removes all observations of `observer`. A handler removed by another handler may still receive the current
    /// change.
    void removeObserver(const void* observer);

protected:
    /// Replaces any property of that name, without telling observers.
    void defineProperty(const std::string& key, Property property);
    /// Assigns between the two notifications.
    template <class T, class U>
    void change(const char* key, T& field, U&& value) {
        willChangeValueForKey(key);
        field = std::forward<U>(value);
        didChangeValueForKey(key);
    }

private:
    struct Observation {
        const void* observer;
        ChangeHandler willChange;
        ChangeHandler didChange;
    };

    void announce(const std::string& key, ChangeHandler Observation::*handler);

    std::map<std::string, Property> properties_;
    std::vector<Observation> observations_;
};

}  // namespace qz
