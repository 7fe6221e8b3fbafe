#include <QScreen>
#include <QWindow>
#include <random>

#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/AnnotationReporting.h"
#include "platform/ui/WindowFrames.h"
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
    // As by the button of its frame.
    EXPECT_TRUE(manager->window()->widget()->close());
    EXPECT_FALSE(defaults.boolForKey("AnnoationPaletteVisible"));
}

TEST_F(AnnotationManager, leavesTheKeysWithTheTextUnlessAskedForThem) {
    showDocument();
    manager->showWindow({});
    const QWindow* panel = manager->window()->widget()->windowHandle();
    EXPECT_EQ(panel->transientParent(), document.windowHandle()) << "above the document, not above other programs";
    EXPECT_FALSE(panel->flags().testFlag(Qt::WindowStaysOnTopHint));
    EXPECT_TRUE(panel->flags().testFlag(Qt::WindowDoesNotAcceptFocus));
    manager->window()->makeKeyAndOrderFront({});
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), manager->window()->widget());
    QTest::keyClick(tableWidget(), Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &document);
    EXPECT_TRUE(panel->flags().testFlag(Qt::WindowDoesNotAcceptFocus)) << "clicks leave them again";
    manager->editor()->setAnno(palette->lookupAnno(keys[0]));
    EXPECT_EQ(editorWindow()->windowHandle()->transientParent(), document.windowHandle());
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), editorWindow());
    manager->editor()->close();
    QApplication::processEvents();
    EXPECT_EQ(QApplication::activeWindow(), &document) << "with the editor gone, typing goes on";
}

TEST_F(AnnotationManager, keepsWhereWindowsStandWhileTheScreenIsThere) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget left, next;
    keepFrame(left, "Test");
    left.setGeometry(40, 50, 300, 200);
    left.show();
    left.move(41, 51);
    EXPECT_TRUE(QTest::qWaitFor([&] { return defaults.hasValueForKey("NSWindow Frame Test"); }));
    keepFrame(next, "Test");
    ASSERT_TRUE(restoreFrame(next));
    EXPECT_EQ(next.geometry(), QRect(41, 51, 300, 200));
    // Beyond the screen, half beyond it, with the title bar above it, higher than it.
    for (const std::string& kept :
         {stringWithFormat("%i 50 300 200 0", {screen.right() + 10}),
          stringWithFormat("%i 50 300 200 0", {screen.right() - 150}), std::string("40 -30 300 200 0"),
          stringWithFormat("0 0 300 %i 0", {screen.height() + 20}), std::string("nonsense")}) {
        defaults.setString(kept, "NSWindow Frame Test");
        EXPECT_FALSE(restoreFrame(next)) << kept;
    }
}

TEST(WindowPlaces, coverNothingWhereThereIsRoom) {
    std::mt19937 random(14);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    int roomy = 0;
    for (int i = 0; i < 500; ++i) {
        const QRect screen(below(100), below(100), 800 + below(1200), 600 + below(600));
        const QSize size(200 + below(400), 200 + below(350));
        std::vector<Occupied> occupied;
        for (int n = 1 + below(3); n > 0; --n)
            occupied.push_back(
                {QRect(screen.topLeft() + QPoint(below(600), below(400)), QSize(200 + below(500), 200 + below(300))) &
                 screen});
        const auto isClear = [&](QPoint at) {
            return std::ranges::none_of(occupied, [&](const auto& each) { return each.rect.intersects({at, size}); });
        };
        bool hasRoom = false;
        for (int x = screen.left(); x + size.width() <= screen.right(); x += 20) {
            for (int y = screen.top(); y + size.height() <= screen.bottom(); y += 20)
                hasRoom = hasRoom || isClear({x, y});
        }
        const QPoint place = placeCoveringLeast(size, screen, occupied, screen.center());
        EXPECT_TRUE(screen.contains(QRect(place, size)) && (isClear(place) || !hasRoom)) << i;
        roomy += hasRoom;
    }
    EXPECT_GT(roomy, 50);
}

TEST_F(AnnotationManager, takesItsBackgroundFromTheDefaults) {
    const auto blue = test::rgba(0, 0, 1);
    defaults.setColor(blue, "App Background Color");
    manager->showWindow({});
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

    // A destroyed responder is unbound.
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
