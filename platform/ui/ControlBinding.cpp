#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <algorithm>

#include "QzAnno/platform/foundation/NSNumber.h"
#include "platform/ui/ColorWell.h"
#include "platform/ui/InterfaceFile.h"
#include "platform/ui/QtValues.h"

namespace qz {
namespace {

double numberOf(const Ref<NSObject>& value) {
    const auto number = std::dynamic_pointer_cast<NSNumber>(value);
    return number ? number->doubleValue() : 0;
}

QString textOf(const Ref<NSObject>& value) {
    return value ? toQt(value->description()) : QString();
}

/// Binds the controls of a window to properties of one object. A child of the window's widget.
class Bindings final : public QObject {
public:
    Bindings(QWidget& in, const Ref<NSObject>& object) : QObject(&in), object_(object) {
        observed()->addObserver(this, nullptr, [this](const std::string& key) { show(key); });
        for (QWidget* control : in.findChildren<QWidget*>()) bind(*control);
        for (const auto& [key, shower] : showers_) show(key);
    }
    ~Bindings() override {
        const Ref<NSObject> object = object_.lock();
        if (auto* observing = dynamic_cast<NSKeyValueObserving*>(object.get())) observing->removeObserver(this);
    }

private:
    using Show = std::function<void(const Ref<NSObject>& value)>;

    NSKeyValueObserving* observed() const { return dynamic_cast<NSKeyValueObserving*>(object_.lock().get()); }

    void show(const std::string& key) {
        const auto [first, last] = showers_.equal_range(key);
        NSKeyValueObserving* observing = observed();
        if (first == last || !observing) return;
        const Ref<NSObject> value = observing->valueForKey(key);
        // Setting a control's value makes it report a change.
        const bool wasShowing = std::exchange(isShowing_, true);
        for (auto shower = first; shower != last; ++shower) shower->second(value);
        isShowing_ = wasShowing;
    }

    void set(const std::string& key, const Ref<NSObject>& value) {
        if (NSKeyValueObserving* observing = observed(); observing && !isShowing_) observing->setValue(value, key);
    }

    void bind(QWidget& control) {
        const auto property = [&](const char* name) { return control.property(name).toString().toStdString(); };
        const QStringList enabling = control.property("enabledBinding").toString().split(' ', Qt::SkipEmptyParts);
        for (const QString& key : enabling) {
            showers_.emplace(key.toStdString(), [this, &control, enabling](const Ref<NSObject>&) {
                NSKeyValueObserving* observing = observed();
                control.setEnabled(std::ranges::all_of(enabling, [&](const QString& each) {
                    return numberOf(observing->valueForKey(each.toStdString())) != 0;
                }));
            });
        }
        if (const std::string key = property("titleBinding"); !key.empty()) bindTitle(control, key);
        if (const std::string key = property("binding"); !key.empty()) {
            if (!bindValue(control, key)) showers_.emplace(key, [](const Ref<NSObject>&) {});
        }
    }

    void bindTitle(QWidget& control, const std::string& key) {
        auto* box = dynamic_cast<QGroupBox*>(&control);
        if (!box) return;
        showers_.emplace(key, [box](const Ref<NSObject>& value) { box->setChecked(numberOf(value) != 0); });
        connect(box, &QGroupBox::clicked, this, [this, key](bool on) { set(key, NSNumber::numberWithBool(on)); });
    }

    bool bindValue(QWidget& control, const std::string& key) {
        if (auto* spin = dynamic_cast<QDoubleSpinBox*>(&control)) {
            spin->setKeyboardTracking(false);
            showers_.emplace(key, [spin](const Ref<NSObject>& value) { spin->setValue(numberOf(value)); });
            connect(spin, &QDoubleSpinBox::valueChanged, this,
                    [this, key](double value) { set(key, NSNumber::numberWithDouble(value)); });
        } else if (auto* wholes = dynamic_cast<QSpinBox*>(&control)) {
            wholes->setKeyboardTracking(false);
            showers_.emplace(
                key, [wholes](const Ref<NSObject>& value) { wholes->setValue(static_cast<int>(numberOf(value))); });
            connect(wholes, &QSpinBox::valueChanged, this,
                    [this, key](int value) { set(key, NSNumber::numberWithInt(value)); });
        } else if (auto* line = dynamic_cast<QLineEdit*>(&control)) {
            showers_.emplace(key, [line](const Ref<NSObject>& value) {
                // Setting the same text would move the insertion point.
                if (line->text() != textOf(value)) line->setText(textOf(value));
            });
            connect(line, &QLineEdit::textEdited, this, [this, key](const QString& text) { set(key, fromQt(text)); });
        } else if (auto* combo = dynamic_cast<QComboBox*>(&control)) {
            // Items from the interface file have no tags; use their index.
            for (int i = 0; i < combo->count(); ++i) {
                if (!combo->itemData(i).isValid()) combo->setItemData(i, i);
            }
            showers_.emplace(key, [combo](const Ref<NSObject>& value) {
                const int tag = static_cast<int>(numberOf(value));
                // Show a number without an item as a number, not as nothing.
                if (combo->findData(tag) < 0) combo->addItem(QString::number(tag), tag);
                combo->setCurrentIndex(combo->findData(tag));
            });
            connect(combo, &QComboBox::activated, this,
                    [this, key, combo] { set(key, NSNumber::numberWithInt(combo->currentData().toInt())); });
        } else if (auto* check = dynamic_cast<QCheckBox*>(&control)) {
            showers_.emplace(key, [check](const Ref<NSObject>& value) { check->setChecked(numberOf(value) != 0); });
            connect(check, &QCheckBox::clicked, this, [this, key](bool on) { set(key, NSNumber::numberWithBool(on)); });
        } else if (auto* well = dynamic_cast<ColorWell*>(&control)) {
            showers_.emplace(
                key, [well](const Ref<NSObject>& value) { well->setColor(std::dynamic_pointer_cast<NSColor>(value)); });
            well->setChosen([this, key](const Ref<NSColor>& color) { set(key, color); });
        } else if (auto* label = dynamic_cast<QLabel*>(&control)) {
            showers_.emplace(key, [label](const Ref<NSObject>& value) { label->setText(textOf(value)); });
        } else {
            return false;
        }
        return true;
    }

    const WeakRef<NSObject> object_;
    std::multimap<std::string, Show> showers_;
    bool isShowing_ = false;
};

}  // namespace

void InterfaceFile::bindControls(QWidget& in, const Ref<NSObject>& object) {
    if (dynamic_cast<NSKeyValueObserving*>(object.get())) new Bindings(in, object);
}

}  // namespace qz
