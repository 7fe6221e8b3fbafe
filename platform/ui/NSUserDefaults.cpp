#include "QzAnno/platform/ui/NSUserDefaults.h"

#include <QSettings>

#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "platform/ui/QtValues.h"

namespace qz {

struct NSUserDefaults::State {
    std::unique_ptr<QSettings> settings;
};

NSUserDefaults::NSUserDefaults() : state_(std::make_unique<State>()) {
    useFile({});
}

NSUserDefaults::~NSUserDefaults() = default;

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
    static NSUserDefaults defaults;
    return defaults;
}

void NSUserDefaults::useFile(const std::string& path) {
    state_->settings = path.empty()
                           ? std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, "QzAnno", "QzAnno")
                           : std::make_unique<QSettings>(toQt(path), QSettings::IniFormat);
}

std::string NSUserDefaults::file() const {
    return state_->settings->fileName().toStdString();
}

bool NSUserDefaults::hasValueForKey(const std::string& key) const {
    return state_->settings->contains(toQt(key));
}

bool NSUserDefaults::boolForKey(const std::string& key) const {
    return state_->settings->value(toQt(key)).toBool();
}

void NSUserDefaults::setBool(bool value, const std::string& forKey) {
    state_->settings->setValue(toQt(forKey), value);
}

std::string NSUserDefaults::stringForKey(const std::string& key) const {
    return state_->settings->value(toQt(key)).toString().toStdString();
}

void NSUserDefaults::setString(const std::string& value, const std::string& forKey) {
    state_->settings->setValue(toQt(forKey), toQt(value));
}

Ref<NSData> NSUserDefaults::dataForKey(const std::string& key) const {
    const QVariant value = state_->settings->value(toQt(key));
    if (value.typeId() != QMetaType::QByteArray) return {};
    const QByteArray bytes = value.toByteArray();
    return NSData::dataWithBytes(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size())));
}

void NSUserDefaults::setData(const NSData& data, const std::string& forKey) {
    const std::string_view bytes = data.view();
    state_->settings->setValue(toQt(forKey), QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

Ref<NSColor> NSUserDefaults::colorForKey(const std::string& key) const {
    const Ref<NSData> data = dataForKey(key);
    return data ? std::dynamic_pointer_cast<NSColor>(NSUnarchiver::unarchiveObjectWithData(data)) : nullptr;
}

void NSUserDefaults::setColor(const Ref<NSColor>& color, const std::string& forKey) {
    if (const Ref<NSData> data = NSArchiver::archivedDataWithRootObject(color)) setData(*data, forKey);
}

void NSUserDefaults::removeObjectForKey(const std::string& key) {
    state_->settings->remove(toQt(key));
}

}  // namespace qz
