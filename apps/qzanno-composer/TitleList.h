#pragma once

#include <QDockWidget>
#include <functional>

#include "apps/qzanno-composer/TitleFile.h"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace qz::composer {

/// The titles of the document, one line each: number, times, and text. Times can be edited in place; without any, their
/// columns are hidden.
class TitleList final : public QDockWidget {
public:
    explicit TitleList(QWidget* parent);

    void list(const std::vector<Title>& titles, size_t current);
    /// Shows below the title why the entry was refused, until the next entry or relisting.
    void refuse(size_t title, const QString& reason);
    /// Called when the user goes to another title.
    void setChosen(std::function<void(size_t title)> chosen) { chosen_ = std::move(chosen); }
    /// Called with the text that the user has entered as a time; the receiver relists the titles if it accepts it.
    void setTimeEntered(std::function<void(size_t title, bool isEnd, const QString& text)> timeEntered) {
        timeEntered_ = std::move(timeEntered);
    }

private:
    void edit(QTreeWidgetItem* item, int column);

    QTreeWidget* const list_;
    QLabel* const refusal_;
    // The titles as shown; compared by identity, since a file may hold thousands.
    std::vector<Title> shown_;
    std::function<void(size_t)> chosen_;
    std::function<void(size_t, bool, const QString&)> timeEntered_;
};

}  // namespace qz::composer
