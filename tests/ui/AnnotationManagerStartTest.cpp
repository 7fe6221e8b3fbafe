#include <gtest/gtest.h>

#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "tests/support/LogCapture.h"

namespace qz {
namespace {

// The panel is loaded once in a process, so this needs one of its own.
TEST(AnnotationManagerAtStart, showsItselfWhenItWasVisible) {
    const test::LogCapture log;
    NSUserDefaults::standardUserDefaults().setBool(true, "AnnoationPaletteVisible");
    const auto manager = QzAnnotationManager::init();
    EXPECT_TRUE(manager->window()->isVisible());
    EXPECT_EQ(QzAnnotationManager::init(), manager);
    EXPECT_EQ(QzAnnotationManager::sharedAnnotationManager(), manager);
    manager->window()->close();
}

}  // namespace
}  // namespace qz
