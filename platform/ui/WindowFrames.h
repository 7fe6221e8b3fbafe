#pragma once

#include <QPoint>
#include <QRect>
#include <string>
#include <vector>

class QWidget;

namespace qz {

/// Keeps in the user's defaults, as "NSWindow Frame NAME", where the window stands and how large it is, from now on.
void keepFrame(QWidget& window, const std::string& name);
/// Puts a window that keeps its frame where it was left. False, and nothing changes, if it was never left anywhere, or
/// where no screen is now.
bool restoreFrame(QWidget& window);

/// Readies a panel that is about to be shown: above the window that it serves, if it floats, and, unless it stands
/// somewhere already, where it was left or else where it covers least of the application's other windows.
void prepareToShow(QWidget& panel, bool floats);

/// Gives the keys of a panel that goes to the window that it was shown above, unless another window has them.
void passKeysOn(const QWidget& panel);

/// A part of the screen, and how much worse than bare screen each of its points is to cover.
struct Occupied {
    QRect rect;
    double weight = 1;
};
/// Where on the screen a window of that size covers least; among equals, the place nearest to `near`.
QPoint placeCoveringLeast(QSize size, const QRect& screen, const std::vector<Occupied>& occupied, QPoint near);

}  // namespace qz
