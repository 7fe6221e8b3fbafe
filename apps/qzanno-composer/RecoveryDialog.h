#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;
class QPushButton;

namespace qz::composer {

/// Shows what crashed composers have left behind, newest first: from when it is and which titles it holds. One of them
/// can be chosen to go on with. Each is thrown away by itself only, once it is shown and the user says so.
class RecoveryDialog final : public QDialog {
public:
    /// Paths of recovery files, oldest first.
    RecoveryDialog(const QStringList& paths, QWidget* parent);

    /// The file to recover, once the dialog is accepted.
    QString chosen() const;

private:
    void add(const QString& path);
    void discard();
    void follow();

    QListWidget* const list_;
    QPushButton* recover_ = nullptr;
    QPushButton* discard_ = nullptr;
};

}  // namespace qz::composer
