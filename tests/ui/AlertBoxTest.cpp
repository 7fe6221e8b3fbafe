#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <thread>

#include <gtest/gtest.h>

#include "QzAnno/platform/foundation/NSAlertPanel.h"
#include "QzAnno/platform/ui/NSApplication.h"

namespace qz {
namespace {

/// Clicks the button of that name as soon as the alert is open; where it has no such button, closes it as Escape does.
void answerAlert(const QString& button) {
    QTimer::singleShot(0, [button] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) return answerAlert(button);
        for (QAbstractButton* each : box->buttons()) {
            if (each->text() == button) return each->click();
        }
        box->reject();
    });
}

TEST(AlertBox, givesBackTheButtonThatIsChosen) {
    NSApplication::sharedApplication();
    const AlertPanel panel = {"Internal Error", "What?", "sweet", "nilly", "dilly"};
    for (const auto& [button, answer] : {std::pair("nilly", NSAlertAlternateReturn),
                                         {"dilly", NSAlertOtherReturn},
                                         {"sweet", NSAlertDefaultReturn},
                                         {"", NSAlertDefaultReturn}}) {
        answerAlert(button);
        EXPECT_EQ(NSRunCriticalAlertPanel(panel), answer) << button;
    }
    // Asked on another thread, it opens on this one.
    NSAlertReturn chosen = NSAlertDefaultReturn;
    answerAlert("nilly");
    std::thread asking([&] {
        chosen = NSRunCriticalAlertPanel(panel);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QApplication::exec();
    asking.join();
    EXPECT_EQ(chosen, NSAlertAlternateReturn);
}

}  // namespace
}  // namespace qz
