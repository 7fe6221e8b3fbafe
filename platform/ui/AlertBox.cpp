#include "platform/ui/AlertBox.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

#include "platform/ui/QtValues.h"

namespace qz {
namespace {

NSAlertReturn runBox(const AlertPanel& panel) {
    QMessageBox box(QMessageBox::Critical, toQt(panel.title), toQt(panel.message));
    const auto addButton = [&](const std::string& title, QMessageBox::ButtonRole role) -> QPushButton* {
        return title.empty() ? nullptr : box.addButton(toQt(title), role);
    };
    QPushButton* byDefault = addButton(panel.defaultButton, QMessageBox::AcceptRole);
    const QPushButton* alternate = addButton(panel.alternateButton, QMessageBox::RejectRole);
    const QPushButton* other = addButton(panel.otherButton, QMessageBox::ActionRole);
    if (byDefault) {
        box.setDefaultButton(byDefault);
        box.setEscapeButton(byDefault);
    }
    box.exec();
    if (alternate && box.clickedButton() == alternate) return NSAlertAlternateReturn;
    return other && box.clickedButton() == other ? NSAlertOtherReturn : NSAlertDefaultReturn;
}

}  // namespace

NSAlertReturn showAlertBox(const AlertPanel& panel) {
    if (!qApp) return NSAlertDefaultReturn;
    if (QThread::currentThread() == qApp->thread()) return runBox(panel);
    NSAlertReturn chosen = NSAlertDefaultReturn;
    QMetaObject::invokeMethod(
        qApp, [&] { chosen = runBox(panel); }, Qt::BlockingQueuedConnection);
    return chosen;
}

}  // namespace qz
