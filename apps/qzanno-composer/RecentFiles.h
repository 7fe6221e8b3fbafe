#pragma once

#include <QMenu>
#include <QStringList>
#include <functional>

namespace qz::composer {

/// The recently opened or saved files, stored in the settings, and an up-to-date menu of them.
class RecentFiles final : public QMenu {
public:
    static constexpr int kPathsMax = 8;

    RecentFiles(QWidget* parent, std::function<void(const std::string& path)> open);

    static QStringList paths();
    /// Puts the file first; files beyond `kPathsMax` are forgotten.
    static void note(const std::string& path);

private:
    void fill();

    const std::function<void(const std::string&)> open_;
};

}  // namespace qz::composer
