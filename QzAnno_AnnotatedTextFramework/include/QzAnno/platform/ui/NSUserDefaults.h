#pragma once

#include <memory>
#include <string>

#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/graphics/NSColor.h"

namespace qz {

/// Settings of the user that outlive the process, by name; kept where the desktop keeps those of the application.
class NSUserDefaults final {
public:
    /// Settings that are set reach the file at leisure, at the latest when the process ends by itself.
    static NSUserDefaults& standardUserDefaults();

    /// Whether there is a value of any kind.
    bool hasValueForKey(const std::string& key) const;
    /// False without a value.
    ///@{
    bool boolForKey(const std::string& key) const;
    void setBool(bool value, const std::string& forKey);
    ///@}
    /// Empty without a value.
    ///@{
    std::string stringForKey(const std::string& key) const;
    void setString(const std::string& value, const std::string& forKey);
    ///@}
    /// None without data.
    ///@{
    Ref<NSData> dataForKey(const std::string& key) const;
    void setData(const NSData& data, const std::string& forKey);
    ///@}
    /// Stored as archived data; none when there is none or it holds no colour.
    ///@{
    Ref<NSColor> colorForKey(const std::string& key) const;
    void setColor(const Ref<NSColor>& color, const std::string& forKey);
    ///@}
    /// A value of any kind.
    void removeObjectForKey(const std::string& key);

    /// Keeps the settings in a file of their own from now on; an empty path brings back the application's.
    void useFile(const std::string& path);
    /// The path of the file that the settings are kept in.
    std::string file() const;

private:
    NSUserDefaults();
    ~NSUserDefaults();

    struct State;
    const std::unique_ptr<State> state_;
};

}  // namespace qz
