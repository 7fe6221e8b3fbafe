#pragma once

#include <QDialog>
#include <QStringList>

class QListWidget;
class QPushButton;

namespace qz::composer {

/// Lists the copies that crashed composers have left, newest first, with their dates and titles. The user can choose
/// one to continue with. Copies are discarded only one by one, once shown and at the user's request.
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
