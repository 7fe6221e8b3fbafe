#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "QzAnno/platform/foundation/NSObject.h"

namespace qz {

/// Properties by name, whose changes observers are told of before and after: what controls bind to.
class NSKeyValueObserving {
public:
    /// How a property is read and set.
    struct Property {
        std::function<Ref<NSObject>()> get;                   ///< never none
        std::function<void(const Ref<NSObject>& value)> set;  ///< none for a property that only its owner sets
    };
    /// Gets the name of the property that changes.
    using ChangeHandler = std::function<void(const std::string& key)>;

    virtual ~NSKeyValueObserving() = default;

    /// None, after `valueForUndefinedKey`, for a name that there is no property of.
    Ref<NSObject> valueForKey(const std::string& key) const;
    /// Sets a property, announced; false when there is none of that name that can be set.
    bool setValue(const Ref<NSObject>& value, const std::string& forKey);
    /// Reports the failure in the log.
    virtual Ref<NSObject> valueForUndefinedKey(const std::string& key) const;

    /// To be called around a change that `setValue` does not make: tells the observers at once, in the order in which
    /// they were added.
    ///@{
    void willChangeValueForKey(const std::string& key);
    void didChangeValueForKey(const std::string& key);
    ///@}

    /// `observer` identifies the observation; whoever observes removes it before it dies. Either handler may be none.
    void addObserver(const void* observer, ChangeHandler willChange, ChangeHandler didChange);
    /// Removes every observation of it. A handler that is removed by another one may still get the change that is being
    /// told of.
    void removeObserver(const void* observer);

protected:
    /// In the place of a property of that name. Tells nobody.
    void defineProperty(const std::string& key, Property property);
    /// Assigns between the two announcements.
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
