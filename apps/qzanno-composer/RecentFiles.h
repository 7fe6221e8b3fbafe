#pragma once

#include <QMenu>
#include <QStringList>
#include <functional>

namespace qz::composer {

/// The files that were opened or saved last, kept in the settings, and a menu of them that follows.
class RecentFiles final : public QMenu {
public:
    static constexpr int kPathsMax = 8;

    RecentFiles(QWidget* parent, std::function<void(const std::string& path)> open);

    static QStringList paths();
    /// Puts the file first; what is over `kPathsMax` is forgotten.
    static void note(const std::string& path);

private:
    void fill();

    const std::function<void(const std::string&)> open_;
};

}  // namespace qz::composer
