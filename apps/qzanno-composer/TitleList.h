#pragma once

#include <QDockWidget>
#include <functional>

#include "apps/qzanno-composer/TitleFile.h"

class QListWidget;

namespace qz::composer {

/// The titles of the document, one line each: number, time and text.
class TitleList final : public QDockWidget {
public:
    explicit TitleList(QWidget* parent);

    void list(const std::vector<Title>& titles, size_t current);
    /// Called when the user goes to another title.
    void setChosen(std::function<void(size_t title)> chosen) { chosen_ = std::move(chosen); }

private:
    QListWidget* const list_;
    // The titles as their rows show them; told apart by identity, for a file may hold thousands.
    std::vector<Title> shown_;
    std::function<void(size_t)> chosen_;
};

/// "00:01:02.500"
QString clock(double seconds);

}  // namespace qz::composer
