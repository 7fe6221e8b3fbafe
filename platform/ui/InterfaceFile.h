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

/// Windows and controls described by an interface file in Qt Designer's format, named by a resource or file path.
///
/// Buttons and actions have the dynamic properties "action" ("apply:") and "target" (a name that the owner gives an
/// object; the responder chain if missing). Controls name the property that they show in "binding", and the properties
/// that together enable them in "enabledBinding"; a group box names the property of a check box in its title in
/// "titleBinding".
class InterfaceFile {
public:
    /// Returns null, with a log line that says what and where, if the file cannot be read.
    static Ref<InterfaceFile> load(const std::string& path);
    ~InterfaceFile();

    /// The widget with that object name; null, with a log line, if there is none.
    QWidget* widgetNamed(const std::string& name) const;
    template <class T>
    T* widget(const std::string& name) const {
        return dynamic_cast<T*>(widgetNamed(name));
    }

    /// A menu of the widget's actions.
    Ref<NSMenu> menuOfWidget(const std::string& name, const std::map<std::string, Ref<NSResponder>>& targets) const;
    /// Makes the buttons in the widget send their actions.
    static void connectActions(QWidget& in, const std::map<std::string, Ref<NSResponder>>& targets);
    /// Keeps the controls in the widget and the object's properties in sync, in both directions, until either is
    /// destroyed. Does nothing unless `object` is an `NSKeyValueObserving`.
    static void bindControls(QWidget& in, const Ref<NSObject>& object);

private:
    InterfaceFile() = default;

    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace qz
