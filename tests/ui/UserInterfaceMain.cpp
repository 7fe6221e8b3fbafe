// Runs the tests of a desktop program without a screen and without touching the user's settings.
#include <QApplication>

#include <gtest/gtest.h>

#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_STYLE_OVERRIDE", "Fusion");
    qputenv("LC_ALL", "C.UTF-8");
    const qz::TemporaryFolder settings;
    qz::NSUserDefaults::standardUserDefaults().useFile(settings.file("defaults.ini"));
    const QApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    qz::NSUserDefaults::standardUserDefaults().useFile({});
    return result;
}
