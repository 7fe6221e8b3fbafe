#include "QzAnno_AnnotatedTextFramework/ui/AnnotationReporting.h"
#include "platform/foundation/NSArchiver.h"
#include "platform/ui/NSUserDefaults.h"
#include "tests/ui/Desk.h"

namespace qz {
namespace {

using testing::Contains;

class AnnotationManager : public test::Desk {
protected:
    NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
};

TEST_F(AnnotationManager, storesWhetherItIsVisible) {
    manager->showWindow({});
    EXPECT_TRUE(defaults.boolForKey("AnnoationPaletteVisible"));
    EXPECT_THAT(log.lines(), Contains("showWindow\n"));
    // As by the button of its frame.
    EXPECT_TRUE(manager->window()->widget()->close());
    EXPECT_FALSE(defaults.boolForKey("AnnoationPaletteVisible"));
    const auto panel = std::dynamic_pointer_cast<NSPanel>(manager->window());
    EXPECT_TRUE(panel->isFloatingPanel());
    EXPECT_TRUE(panel->becomesKeyOnlyIfNeeded());
}

TEST_F(AnnotationManager, takesItsBackgroundFromTheDefaults) {
    manager->showWindow({});
    EXPECT_FALSE(manager->window()->backgroundColor());
    const auto blue = test::rgba(0, 0, 1);
    defaults.setData(*NSArchiver::archivedDataWithRootObject(blue), "App Background Color");
    manager->showWindow({});
    EXPECT_TRUE(areEqual(manager->window()->backgroundColor(), blue));
    defaults.setData(*NSData::dataWithBytes(std::string_view("no archive")), "App Background Color");
    manager->showWindow({});
    EXPECT_TRUE(areEqual(manager->window()->backgroundColor(), blue)) << "what is no colour changes nothing";
    defaults.removeObjectForKey("App Background Color");
    manager->window()->setBackgroundColor({});
}

TEST_F(AnnotationManager, staysOnItsPaletteWhileAResponderIsBound) {
    const auto other = test::paletteWithGlobals({});
    EXPECT_FALSE(manager->setResponder(view, other)) << "not the palette shown";
    EXPECT_FALSE(manager->setResponder({}, palette));
    EXPECT_FALSE(manager->setResponder(other, palette)) << "takes no changes";
    EXPECT_TRUE(manager->setResponder(view, palette));
    EXPECT_TRUE(manager->setAnnotationPalette(palette));
    EXPECT_FALSE(manager->setAnnotationPalette(other));
    EXPECT_EQ(table().palette(), palette);
    EXPECT_FALSE(manager->clearResponder(other));
    EXPECT_TRUE(manager->clearResponder(view));
    EXPECT_FALSE(manager->clearResponder(view));
    EXPECT_TRUE(manager->setAnnotationPalette(other));
}

/// Counts what it is sent.
class Listener : public NSObject, public QzAnnoUsing {
public:
    void changeAnno(const QzAnnoChanging&) override { ++changes; }
    std::string className() const override { return "Listener"; }
    int changes = 0;
};

TEST_F(AnnotationManager, sendsChangesToTheBoundResponderOrUpTheChain) {
    showDocument();
    setTitle("ab", {});
    const auto listener = std::make_shared<Listener>();
    EXPECT_TRUE(manager->setResponder(listener, palette));
    manager->sendChangeAnno(manager->ptable());
    EXPECT_EQ(listener->changes, 1);
    EXPECT_THAT(log.lines(), testing::Not(Contains("changeAnno received, my lord!\n"))) << "not the focused view";
    manager->clearResponder(listener);
    manager->sendChangeAnno(manager->ptable());
    EXPECT_EQ(listener->changes, 1);
    EXPECT_THAT(log.lines(), Contains("changeAnno received, my lord!\n"));

    // With the panel in front, the document's first responder still gets them.
    log.clear();
    manager->window()->makeKeyAndOrderFront({});
    tableWidget()->setFocus();
    QApplication::processEvents();
    ASSERT_EQ(QApplication::activeWindow(), manager->window()->widget());
    manager->sendChangeAnno(manager->ptable());
    EXPECT_THAT(log.lines(), Contains("changeAnno received, my lord!\n"));

    // One that dies is forgotten.
    manager->setResponder(std::make_shared<Listener>(), palette);
    EXPECT_TRUE(manager->setAnnotationPalette(test::paletteWithGlobals({})));
    log.clear();
    document.hide();
    manager->sendChangeAnno(manager->ptable());
    EXPECT_THAT(log.lines(), testing::Not(Contains("changeAnno received, my lord!\n"))) << "nobody is there";
}

/// A host's own view of annotated text.
class Reporter : public NSObject, public QzSelectedAnnotationReporting {
public:
    explicit Reporter(Ref<NSSet> selected) : selected_(std::move(selected)) {}
    bool getImmutableAnnotationKeys(Ref<NSSet>& immutableKeys, Ref<NSSet>& selected,
                                    Ref<NSSet>& sparse) const override {
        immutableKeys = sparse = NSSet::set();
        selected = selected_;
        return true;
    }
    std::string className() const override { return "Reporter"; }

private:
    Ref<NSSet> selected_;
};

TEST_F(AnnotationManager, followsTheNotificationsOfAHost) {
    const auto reporter = std::make_shared<Reporter>(NSSet::setWithObject(keys[1]));
    const Ref<NSString> name = "HostSelectionDidChange"_ns;
    auto& center = NSNotificationCenter::defaultCenter();
    manager->addSelectionChangeNotifier(name, reporter);
    center.postNotificationName(name, reporter);
    EXPECT_EQ(namesOf(table().selectedAnnoKeys()), "B");
    manager->removeSelectionChangeNotifier(name, reporter);
    setTitle("ab", {{keys[0], {0, 2}}});
    view->setSelectedRange({0, 1});
    EXPECT_EQ(namesOf(table().selectedAnnoKeys()), "A") << "text views are followed all the time";
    center.postNotificationName(name, reporter);
    EXPECT_EQ(namesOf(table().selectedAnnoKeys()), "A");
}

TEST_F(AnnotationManager, undoesPaletteEditsInThePanel) {
    manager->window()->makeKeyAndOrderFront({});
    tableWidget()->setFocus();
    palette->removeAnno(keys[2]);
    EXPECT_EQ(order(), "D B A Default ");
    QTest::keyClick(tableWidget(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(order(), "D C B A Default ");
}

TEST_F(AnnotationManager, handsItsRoleToAManagerThatIsShown) {
    const Ref<NSWindow> panel = manager->window();
    const auto adopter = QzAnnotationManager::initWithWindow({});
    EXPECT_FALSE(adopter->isWindowLoaded());
    adopter->showWindow({});
    EXPECT_TRUE(adopter->isWindowLoaded());
    EXPECT_FALSE(manager->isWindowLoaded());
    EXPECT_EQ(adopter->window(), panel);
    EXPECT_FALSE(manager->window());
    EXPECT_EQ(QzAnnotationManager::sharedAnnotationManager(), adopter);
    manager = adopter;
    // The panel goes on working under its new manager.
    showDocument();
    setTitle("ab", {});
    view->setSelectedRange({0, 1});
    click(3, 0);
    EXPECT_EQ(coverage(), "A  ");
    panel->close();
    EXPECT_FALSE(defaults.boolForKey("AnnoationPaletteVisible"));
}

}  // namespace
}  // namespace qz
