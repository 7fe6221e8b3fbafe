#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "QzAnno/platform/ui/NSKeyValueObserving.h"
#include "QzAnno/platform/ui/NSMenu.h"
#include "QzAnno/platform/ui/NSResponder.h"

class QWidget;

namespace qz {

/// Windows and controls as an interface file describes them: one in the form of Qt Designer, by the name of a resource
/// or a file.
///
/// Buttons and actions name what they do in the dynamic properties "action" ("apply:") and "target" (a name that the
/// owner gives an object; without one, the responder chain). Controls name the property that they show in "binding",
/// and those that together enable them in "enabledBinding"; a group box names one for a check box in its title in
/// "titleBinding".
class InterfaceFile {
public:
    /// None, with a log line that says what and where, when the file cannot be read.
    static Ref<InterfaceFile> load(const std::string& path);
    ~InterfaceFile();

    /// The widget of that object name; null, with a log line, when there is none.
    QWidget* widgetNamed(const std::string& name) const;
    template <class T>
    T* widget(const std::string& name) const {
        return dynamic_cast<T*>(widgetNamed(name));
    }

    /// The actions that the widget lists, as a menu.
    Ref<NSMenu> menuOfWidget(const std::string& name, const std::map<std::string, Ref<NSResponder>>& targets) const;
    /// Lets the buttons in the widget send their actions.
    static void connectActions(QWidget& in, const std::map<std::string, Ref<NSResponder>>& targets);
    /// Keeps the controls in the widget and the object's properties alike, both ways, until either dies. `object` also
    /// keeps track of the object's life.
    static void bindControls(QWidget& in, const Ref<NSObject>& object);

private:
    InterfaceFile() = default;

    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace qz
