#include "platform/ui/WindowFrames.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <limits>

#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "platform/ui/QtValues.h"

namespace qz {
namespace {

constexpr int kGap = 8;
constexpr const char* kNameProperty = "frameAutosaveName";
// Covering bare screen costs nothing, a document less than another panel, and menus must stay within reach.
constexpr double kDocumentWeight = 1, kFocusWeight = 2, kPanelWeight = 6, kMenuWeight = 20;
// The user works in the served panel at the same time.
constexpr double kServedPanelWeight = 15;

/// Whether the window is visible, can be reached by its title bar, and is no larger than the screen.
bool isOnScreens(const QRect& frame) {
    constexpr double kShownMin = 0.75;
    double shown = 0;
    bool isReached = false;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect available = screen->availableGeometry(), part = available & frame;
        shown += static_cast<double>(part.width()) * part.height();
        const bool fits = frame.width() <= available.width() && frame.height() <= available.height();
        isReached = isReached || (fits && !part.isEmpty() && part.top() == frame.top());
    }
    return isReached && shown >= kShownMin * frame.width() * frame.height();
}

std::string keyOf(const QWidget& window) {
    return "NSWindow Frame " + window.property(kNameProperty).toString().toStdString();
}

/// The frame that the desktop draws around a window; a guess until it is drawn.
QMargins borderOf(const QWidget& window) {
    const QRect frame = window.frameGeometry(), inside = window.geometry();
    if (frame != inside || QGuiApplication::platformName() == "offscreen")
        return {inside.left() - frame.left(), inside.top() - frame.top(), frame.right() - inside.right(),
                frame.bottom() - inside.bottom()};
    return {2, window.style()->pixelMetric(QStyle::PM_TitleBarHeight), 2, 4};
}

/// The window with its border.
QRect outside(const QWidget& window) {
    return {window.frameGeometry().topLeft(), window.size().grownBy(borderOf(window))};
}

/// Saves the frame once the window has come to rest: during a move the desktop reports a stream of positions, and
/// before the window has a border, wrong ones.
class FrameKeeper final : public QObject {
public:
    explicit FrameKeeper(QWidget& window) : QObject(&window), window_(window) {
        constexpr int kRestMilliseconds = 300;
        rest_.setSingleShot(true);
        rest_.setInterval(kRestMilliseconds);
        connect(&rest_, &QTimer::timeout, this, [this] { keep(); });
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const QEvent::Type type = event->type();
        if (watched == &window_ && (type == QEvent::Move || type == QEvent::Resize) && window_.isVisible())
            rest_.start();
        if (watched == &window_ && type == QEvent::Close && rest_.isActive()) keep();
        return false;
    }

private:
    void keep() {
        rest_.stop();
        if (!window_.isVisible() || window_.isMinimized() || window_.isFullScreen()) return;
        const bool isMaximized = window_.isMaximized();
        const QRect normal = window_.normalGeometry();
        const QPoint at = isMaximized ? normal.topLeft() : window_.frameGeometry().topLeft();
        const QSize size = isMaximized ? normal.size() : window_.size();
        NSUserDefaults::standardUserDefaults().setString(
            stringWithFormat("%i %i %i %i %i", {at.x(), at.y(), size.width(), size.height(), int{isMaximized}}),
            keyOf(window_));
    }

    QWidget& window_;
    QTimer rest_;
};

bool isDocument(const QWidget& window) {
    return window.windowType() == Qt::Window || window.windowType() == Qt::Widget;
}

bool isPanel(const QWidget& window) {
    return window.windowType() == Qt::Tool;
}

/// The window that a panel belongs to: the one with the button that opens it, excluding panels that do not take the
/// focus and windows that belong to this panel.
QWidget* windowServedBy(const QWidget& panel) {
    QWidget* active = QApplication::activeWindow();
    bool isServed =
        active && (isDocument(*active) || isPanel(*active)) && !active->testAttribute(Qt::WA_ShowWithoutActivating);
    for (const QWindow* above = isServed ? active->windowHandle() : nullptr; above; above = above->transientParent())
        isServed = isServed && above != panel.windowHandle();
    return isServed ? active : NSApplication::sharedApplication().mainWindow();
}

/// The window's title bar and menus.
QRect menusOf(const QWidget& window) {
    const auto* main = qobject_cast<const QMainWindow*>(&window);
    if (!main || !main->menuWidget()) return {};
    const QRect frame = outside(window);
    return {frame.topLeft(), QSize(frame.width(), borderOf(window).top() + main->menuWidget()->height())};
}

std::vector<Occupied> occupiedBeside(const QWidget& panel, const QWidget* served) {
    std::vector<Occupied> occupied;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window == &panel || !window->isVisible() || (!isPanel(*window) && !isDocument(*window))) continue;
        const QRect frame = outside(*window);
        const double panelWeight = window == served ? kServedPanelWeight : kPanelWeight;
        occupied.push_back({frame, isPanel(*window) ? panelWeight : kDocumentWeight});
        const QWidget* focus = window->focusWidget();
        if (isDocument(*window) && focus)
            occupied.push_back({QRect(focus->mapToGlobal(QPoint()), focus->size()), kFocusWeight});
        if (const QRect menus = menusOf(*window); !menus.isEmpty()) occupied.push_back({menus, kMenuWeight});
    }
    return occupied;
}

/// Places the panel, allowing for the border that the desktop will draw. Shrinks a panel that would cover menus or
/// other panels to the room below the menus and beside the panels.
void place(QWidget& panel, const QWidget* served) {
    const QRect available = (served ? served : &panel)->screen()->availableGeometry();
    const QMargins border = borderOf(served ? *served : panel);
    const QRect around = served ? outside(*served) : available;
    const std::vector<Occupied> occupied = occupiedBeside(panel, served);
    const auto placeWithin = [&](QSize within) {
        const QSize wanted = panel.testAttribute(Qt::WA_Resized) ? panel.size() : panel.sizeHint();
        panel.resize(wanted.boundedTo(within.shrunkBy(border)).expandedTo(panel.minimumSizeHint()));
        const QSize frame = panel.size().grownBy(border);
        panel.move(placeCoveringLeast(frame, available, occupied, QPoint(around.right(), around.center().y())));
        return QRect(panel.pos(), frame);
    };
    const QRect wanted = placeWithin(available.size());
    QSize room = available.size();
    for (const Occupied& each : occupied) {
        if (each.weight < kPanelWeight || !each.rect.intersects(wanted)) continue;
        if (each.weight == kMenuWeight)
            room.setHeight(std::min(room.height(), available.bottom() - each.rect.bottom()));
        else
            room.setWidth(
                std::min(room.width(),
                         std::max(each.rect.left() - available.left(), available.right() - each.rect.right()) - kGap));
    }
    if (room != available.size()) placeWithin(room);
}

}  // namespace

void keepFrame(QWidget& window, const std::string& name) {
    window.setProperty(kNameProperty, toQt(name));
    new FrameKeeper(window);
}

bool restoreFrame(QWidget& window) {
    const std::string kept = NSUserDefaults::standardUserDefaults().stringForKey(keyOf(window));
    const QStringList numbers = toQt(kept).split(' ');
    if (numbers.size() != 5) return false;
    const QPoint at(numbers[0].toInt(), numbers[1].toInt());
    const QSize size(numbers[2].toInt(), numbers[3].toInt());
    if (size.isEmpty() || !isOnScreens(QRect(at, size))) return false;
    window.resize(size);
    window.move(at);
    if (numbers[4] == "1") window.setWindowState(Qt::WindowMaximized);
    return true;
}

QPoint placeCoveringLeast(QSize size, const QRect& screen, const std::vector<Occupied>& occupied, QPoint near) {
    std::vector<int> xs = {screen.left(), screen.right() + 1 - size.width()};
    std::vector<int> ys = {screen.top(), screen.bottom() + 1 - size.height()};
    for (const Occupied& each : occupied) {
        const QRect& rect = each.rect;
        for (const int x :
             {rect.left(), rect.right() + kGap, rect.right() + 1 - size.width(), rect.left() - kGap - size.width()})
            xs.push_back(std::clamp(x, xs[0], std::max(xs[0], xs[1])));
        for (const int y :
             {rect.top(), rect.bottom() + kGap, rect.bottom() + 1 - size.height(), rect.top() - kGap - size.height()})
            ys.push_back(std::clamp(y, ys[0], std::max(ys[0], ys[1])));
    }
    QPoint best = screen.topLeft();
    double least = std::numeric_limits<double>::infinity();
    for (const int x : xs) {
        for (const int y : ys) {
            const QRect place(QPoint(x, y), size);
            double cost = 0;
            for (const Occupied& each : occupied) {
                const QRect covered = place & each.rect;
                cost += each.weight * covered.width() * covered.height();
            }
            cost += (place.center() - near).manhattanLength();
            if (cost >= least) continue;
            least = cost;
            best = place.topLeft();
        }
    }
    return best;
}

void prepareToShow(QWidget& panel, bool floats) {
    if (panel.isVisible()) return;
    const QWidget* served = windowServedBy(panel);
    const bool stands = panel.testAttribute(Qt::WA_Moved) && isOnScreens(panel.frameGeometry());
    // Without a screen, windows exist only for pictures and need not fit.
    const bool hasScreen = QGuiApplication::platformName() != "offscreen";
    // Do this before there is a native window: of one without a border yet, the toolkit moves the inside.
    if (!stands && !restoreFrame(panel) && hasScreen) place(panel, served);
    panel.winId();
    if (floats && served) panel.windowHandle()->setTransientParent(served->window()->windowHandle());
}

void passKeysOn(const QWidget& panel) {
    const QWindow* window = panel.windowHandle();
    QWindow* served = window ? window->transientParent() : nullptr;
    // Some desktops have taken the focus from the panel by now; others do so later.
    const QWidget* active = QApplication::activeWindow();
    if ((!active || active == &panel) && served && served->isVisible()) served->requestActivate();
}

}  // namespace qz
