#pragma once

#include <QPoint>
#include <QRect>
#include <string>
#include <vector>

class QWidget;

namespace qz {

/// From now on, saves the window's position and size in the user defaults, as "NSWindow Frame NAME".
void keepFrame(QWidget& window, const std::string& name);
/// Moves a window that keeps its frame to where it was left. Returns false and does nothing if there is no saved frame,
/// or no screen there now.
bool restoreFrame(QWidget& window);

/// Prepares a panel for being shown: above the window that it serves, if it floats, and, unless it has a place already,
/// where it was left or else where it covers least of the application's other windows.
void prepareToShow(QWidget& panel, bool floats);

/// Gives the focus of a closing panel to the window that it was shown above, unless another window has it.
void passKeysOn(const QWidget& panel);

/// A part of the screen, and the cost of covering each of its points, where bare screen costs 0.
struct Occupied {
    QRect rect;
    double weight = 1;
};
/// The place on the screen where a window of that size covers least; among equals, the one nearest to `near`.
QPoint placeCoveringLeast(QSize size, const QRect& screen, const std::vector<Occupied>& occupied, QPoint near);

}  // namespace qz
