#include "apps/qzanno-composer/RecentFiles.h"

#include <QFileInfo>

#include "QzAnno/platform/ui/NSUserDefaults.h"

namespace qz::composer {
namespace {

// Paths, each terminated by a zero, which no path contains.
constexpr const char* kSetting = "Recent Files";

void store(const QStringList& paths) {
    NSUserDefaults::standardUserDefaults().setData(*NSData::dataWithBytes(paths.join(QChar(0)).toStdString()),
                                                   kSetting);
}

}  // namespace

RecentFiles::RecentFiles(QWidget* parent, std::function<void(const std::string& path)> open)
    : QMenu("Open &Recent", parent), open_(std::move(open)) {
    connect(this, &QMenu::aboutToShow, this, &RecentFiles::fill);
}

QStringList RecentFiles::paths() {
    const Ref<NSData> data = NSUserDefaults::standardUserDefaults().dataForKey(kSetting);
    return data ? QString::fromStdString(std::string(data->view())).split(QChar(0), Qt::SkipEmptyParts) : QStringList();
}

void RecentFiles::note(const std::string& path) {
    const QString absolute = QFileInfo(QString::fromStdString(path)).absoluteFilePath();
    QStringList all = paths();
    all.removeAll(absolute);
    all.prepend(absolute);
    store(all.mid(0, kPathsMax));
}

void RecentFiles::fill() {
    clear();
    int number = 0;
    for (const QString& path : paths()) {
        QString shown = QFileInfo(path).fileName();
        shown.replace('&', "&&");
        QAction* action =
            addAction(QString("&%1  %2").arg(++number).arg(shown), this, [this, path] { open_(path.toStdString()); });
        action->setToolTip(path);
        action->setStatusTip(path);
    }
    if (number == 0) addAction("No Files Yet")->setEnabled(false);
    addSeparator();
    addAction("&Clear", this, [] { store({}); })->setEnabled(number > 0);
}

}  // namespace qz::composer
