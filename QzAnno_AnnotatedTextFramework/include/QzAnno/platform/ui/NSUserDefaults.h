#pragma once

#include <memory>
#include <string>

#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// Persistent user settings by name, stored where the desktop keeps the application's.
class NSUserDefaults final {
public:
    /// Changes reach the file later, at the latest on normal process exit.
    static NSUserDefaults& standardUserDefaults();

    /// Whether the key has a value of any type.
    bool hasValueForKey(const std::string& key) const;
    /// False if the key has no value.
    ///@{
    bool boolForKey(const std::string& key) const;
    void setBool(bool value, const std::string& forKey);
    ///@}
    /// Empty if the key has no value.
    ///@{
    std::string stringForKey(const std::string& key) const;
    void setString(const std::string& value, const std::string& forKey);
    ///@}
    /// Null if the key has no data.
    ///@{
    Ref<NSData> dataForKey(const std::string& key) const;
    void setData(const NSData& data, const std::string& forKey);
    ///@}
    /// Stored as archived data; null if the key has no data or the data holds no colour.
    ///@{
    Ref<NSColor> colorForKey(const std::string& key) const;
    void setColor(const Ref<NSColor>& color, const std::string& forKey);
    ///@}
    /// Removes a value of any type.
    void removeObjectForKey(const std::string& key);

    /// Stores the settings in this file from now on; an empty path restores the application's file.
    void useFile(const std::string& path);
    /// The path of the file that stores the settings.
    std::string file() const;

private:
    NSUserDefaults();
    ~NSUserDefaults();

    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
