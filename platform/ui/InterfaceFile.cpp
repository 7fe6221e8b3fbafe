#include "platform/ui/InterfaceFile.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QPointer>
#include <QUiLoader>
#include <QWidget>
#include <map>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "platform/ui/ColorWell.h"
#include "platform/ui/QtValues.h"
#include "platform/ui/TableWidget.h"

namespace qz {
namespace {

/// Makes the widgets of this folder as well as the toolkit's.
class Loader final : public QUiLoader {
public:
    QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
        QWidget* widget = nullptr;
        if (className == "TableWidget") widget = new TableWidget(parent);
        if (className == "ColorWell") widget = new ColorWell(parent);
        if (!widget) return QUiLoader::createWidget(className, parent, name);
        widget->setObjectName(name);
        return widget;
    }
};

std::string textProperty(const QObject& object, const char* name) {
    return object.property(name).toString().toStdString();
}

Ref<NSResponder> targetOf(const QObject& object, const std::map<std::string, Ref<NSResponder>>& targets) {
    const std::string name = textProperty(object, "target");
    const auto found = targets.find(name);
    if (found == targets.end() && !name.empty()) {
        NSLog("The interface file names the target %@, which its owner does not have\n", {name});
    }
    return found == targets.end() ? nullptr : found->second;
}

}  // namespace

struct InterfaceFile::State {
    std::string path;
    // Windows made from its children remove them from it.
    std::unique_ptr<QWidget> root;
    std::map<std::string, QPointer<QWidget>> widgets;
};

InterfaceFile::~InterfaceFile() = default;

Ref<InterfaceFile> InterfaceFile::load(const std::string& path) {
    QFile file(toQt(path));
    Loader loader;
    QWidget* root = file.open(QIODevice::ReadOnly) ? loader.load(&file) : nullptr;
    if (!root) {
        NSLog("The interface file %@ cannot be read: %@\n",
              {path, (file.isOpen() ? loader.errorString() : file.errorString()).toStdString()});
        return {};
    }
    Ref<InterfaceFile> interface(new InterfaceFile);
    interface->state_ = std::make_unique<State>();
    interface->state_->path = path;
    interface->state_->root.reset(root);
    for (QWidget* widget : root->findChildren<QWidget*>()) {
        interface->state_->widgets[widget->objectName().toStdString()] = widget;
    }
    return interface;
}

QWidget* InterfaceFile::widgetNamed(const std::string& name) const {
    const auto found = state_->widgets.find(name);
    if (found != state_->widgets.end() && found->second) return found->second;
    NSLog("The interface file %@ has no widget named %@\n", {state_->path, name});
    return nullptr;
}

Ref<NSMenu> InterfaceFile::menuOfWidget(const std::string& name,
                                        const std::map<std::string, Ref<NSResponder>>& targets) const {
    const QWidget* widget = widgetNamed(name);
    if (!widget) return {};
    const Ref<NSMenu> menu = NSMenu::initWithTitle(fromQt(widget->accessibleName()));
    for (const QAction* action : widget->actions()) {
        const Ref<NSMenuItem> item = NSMenuItem::initWithTitle(fromQt(action->text()), textProperty(*action, "action"));
        item->setTarget(targetOf(*action, targets));
        menu->addItem(item);
    }
    return menu;
}

void InterfaceFile::connectActions(QWidget& in, const std::map<std::string, Ref<NSResponder>>& targets) {
    for (QAbstractButton* button : in.findChildren<QAbstractButton*>()) {
        const std::string action = textProperty(*button, "action");
        if (action.empty()) continue;
        const WeakRef<NSResponder> target = targetOf(*button, targets);
        const bool hasTarget = !target.expired();
        QObject::connect(button, &QAbstractButton::clicked, button, [action, target, hasTarget] {
            const Ref<NSResponder> responder = target.lock();
            if (responder || !hasTarget) NSApplication::sharedApplication().sendAction(action, responder, {});
        });
    }
}

}  // namespace qz
