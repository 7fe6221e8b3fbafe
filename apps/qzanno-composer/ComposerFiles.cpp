// Opening and saving, and the handling of unsaved changes.

#include <QCloseEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <algorithm>

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "apps/qzanno-composer/ComposerWindow.h"
#include "apps/qzanno-composer/RecentFiles.h"
#include "apps/qzanno-composer/RecoveryDialog.h"
#include "apps/qzanno-composer/TitleList.h"
#include "captions/Format.h"
#include "platform/foundation/FileEnding.h"

namespace qz::composer {
namespace {

std::vector<uint8_t> rowsOf(const NSBitmapImageRep& picture) {
    std::vector<uint8_t> bytes;
    const size_t rowBytes = size_t{4} * static_cast<size_t>(picture.pixelsWide());
    bytes.reserve(rowBytes * static_cast<size_t>(picture.pixelsHigh()));
    for (int32_t y = 0; y < picture.pixelsHigh(); ++y) {
        bytes.insert(bytes.end(), picture.row(y), picture.row(y) + rowBytes);
    }
    return bytes;
}

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString ComposerWindow::filterOf(std::string_view name, const std::vector<std::string>& endings) {
    QStringList globs;
    for (const std::string& ending : endings) globs.append("*" + QString::fromStdString(ending));
    return textOf(name) + " (" + globs.join(' ') + ")";
}

bool ComposerWindow::report(const std::string& message) {
    auto* box =
        new QMessageBox(QMessageBox::Warning, windowTitle(), QString::fromStdString(message), QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
    return false;
}

void ComposerWindow::setFiles(const std::string& titles, const std::string& palette) {
    if (!titles.empty()) document_->setTitlesFile(titles);
    if (!palette.empty()) document_->setPaletteFile(palette);
    for (const std::string& path : {titles, palette}) {
        if (!path.empty()) RecentFiles::note(path);
    }
    describe();
}

void ComposerWindow::choose(const char* title, const QString& filter,
                            bool (ComposerWindow::*read)(const std::string&)) {
    const QString path = QFileDialog::getOpenFileName(this, title, {}, filter);
    if (!path.isEmpty()) (this->*read)(path.toStdString());
}

bool ComposerWindow::chooseToSave(const char* title, const QString& filter,
                                  bool (ComposerWindow::*write)(const std::string&), const std::string& proposed) {
    QString chosen;
    QString path = QFileDialog::getSaveFileName(this, title, QString::fromStdString(proposed), filter, &chosen);
    if (path.isEmpty()) return false;
    if (QFileInfo(path).suffix().isEmpty()) {
        const QString ending = chosen.section("*.", 1).section(')', 0, 0).section(' ', 0, 0);
        path += "." + (ending.isEmpty() ? filter.section("*.", 1, 1).section(')', 0, 0) : ending);
    }
    return (this->*write)(path.toStdString());
}

bool ComposerWindow::saveTitlesWhereTheyAre() {
    const std::string& file = document_->titlesFile();
    const Format* const format = formatToWrite(file);
    // What a reader leaves out of another's file would be gone for good.
    const bool isSafe = format && (format->keepsItsFiles || file == writtenFile_);
    return isSafe ? saveTitles(file) : chooseTitlesFile();
}

bool ComposerWindow::chooseTitlesFile() {
    const std::string& former = document_->titlesFile();
    const QFileInfo file(former.empty() ? QString("titles") : QString::fromStdString(former));
    const bool hasTimes = document_->titles().front().start.has_value();
    const Format* proposed = formatToWrite(former);
    QStringList filters;
    for (const Format& format : formats()) {
        if (!format.write) continue;
        if (!proposed && format.hasTimes() == hasTimes) proposed = &format;
        const QString filter = filterOf(format.name, {std::string(format.ending())});
        &format == proposed ? filters.prepend(filter) : filters.append(filter);
    }
    const QString path = QDir(file.path()).filePath(file.completeBaseName() + textOf(proposed->ending()));
    return chooseToSave("Save Titles", filters.join(";;"), &ComposerWindow::saveTitles, path.toStdString());
}

bool ComposerWindow::mayLose(const std::vector<std::string>& losses) {
    constexpr size_t kShownMax = 6;
    QStringList lines;
    size_t others = 0;
    for (const std::string& loss : losses) {
        if (std::ranges::find(acceptedLosses_, loss) != acceptedLosses_.end()) continue;
        if (lines.size() < static_cast<qsizetype>(kShownMax))
            lines.push_back(QString::fromStdString(loss));
        else
            ++others;
    }
    if (lines.isEmpty()) return true;
    if (others > 0) lines.push_back(QString("… and %1 more").arg(others));
    QMessageBox box(QMessageBox::Warning, "QzAnno Composer",
                    "The file will not hold all that the titles are:", QMessageBox::Cancel, this);
    box.setInformativeText(lines.join("\n"));
    const QPushButton* save = box.addButton("Save All the Same", QMessageBox::AcceptRole);
    box.exec();
    return box.clickedButton() == save;
}

bool ComposerWindow::savePaletteWhereItIs() {
    const std::string& file = document_->paletteFile();
    return file.empty() ? choosePaletteFile() : savePalette(file);
}

bool ComposerWindow::choosePaletteFile() {
    const std::string& former = document_->paletteFile();
    return chooseToSave("Save Palette", "Palettes (*.plist *.annopalette)", &ComposerWindow::savePalette,
                        former.empty() ? "palette.plist" : former);
}

bool ComposerWindow::open(const std::string& path) {
    const std::string ending = endingOf(path);
    if (ending == ".plist" || ending == ".annopalette") return openPalette(path);
    if (ending == ".png") return openFrame(path);
    return openTitles(path);
}

bool ComposerWindow::openTitles(const std::string& path) {
    if (!mayLeave(true, false)) return false;
    std::string error;
    auto file = readTitleFile(path, document_->palette(), error);
    if (!file) return report(error);
    const std::vector<std::string> warnings = file->warnings;
    document_->setTitles(std::move(*file));
    acceptedLosses_.clear();
    writtenFile_.clear();
    setFiles(path, {});
    if (document_->titles().size() > 1) list_->setVisible(true);
    if (!warnings.empty()) {
        const size_t others = warnings.size() - 1;
        const QString more = others == 0 ? QString() : QString(" (and %1 more)").arg(others);
        statusBar()->showMessage(QString::fromStdString(warnings.front()) + more, 10000);
    }
    return true;
}

bool ComposerWindow::openPalette(const std::string& path) {
    if (!mayLeave(false, true)) return false;
    std::string error;
    const Ref<QzAnnoPalette> palette = readPaletteFile(path, error);
    if (!palette) return report(error);
    document_->replacePalette(palette, path);
    setFiles({}, path);
    return true;
}

bool ComposerWindow::openFrame(const std::string& path) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<NSBitmapImageRep> frame = file ? bitmapFromPNG(*file, &reason) : nullptr;
    if (!frame) return report(path + ": " + reason);
    setFrame(frame);
    RecentFiles::note(path);
    return true;
}

bool ComposerWindow::saveTitles(const std::string& path) {
    std::string error;
    const auto written = titlesAsFile(path, document_->file(), document_->palette(), document_->screenSize(), error);
    if (!written) return report(error);
    if (path != document_->titlesFile()) acceptedLosses_.clear();
    if (!mayLose(written->losses)) return false;
    std::string reason;
    if (!writeFileAtomically(path, written->file->bytes(), &reason)) return report(path + ": " + reason);
    acceptedLosses_ = written->losses;
    // The file has given missing times.
    if (formatToWrite(path)->hasTimes()) document_->completeTimes();
    writtenFile_ = path;
    document_->markTitlesSaved();
    setFiles(path, {});
    return true;
}

bool ComposerWindow::savePalette(const std::string& path) {
    std::string reason;
    const Ref<NSData> file = dataOfPalette(document_->palette(), path, &reason);
    if (!file || !writeFileAtomically(path, file->bytes(), &reason)) return report(path + ": " + reason);
    document_->markPaletteSaved();
    setFiles({}, path);
    return true;
}

bool ComposerWindow::savePicture(const std::string& path) {
    std::string reason = "no picture of this size can be made";
    const Ref<NSBitmapImageRep> picture = document_->picture();
    const bool isWritten =
        picture && (endingOf(path) == ".rgba" ? writeFileAtomically(path, rowsOf(*picture), &reason)
                                              : writeFileAtomically(path, pngFromBitmap(*picture)->bytes(), &reason));
    return isWritten || report(path + ": " + reason);
}

// Unsaved changes

bool ComposerWindow::mayLeaveEditor() {
    const auto& editor = QzAnnotationManager::sharedAnnotationManager()->editor();
    if (!editor || !editor->hasChanges()) return true;
    const int answer =
        QMessageBox::warning(this, "QzAnno Composer", "The annotation in the editor has changes that are not applied.",
                             QMessageBox::Apply | QMessageBox::Discard | QMessageBox::Cancel);
    if (answer == QMessageBox::Apply) editor->apply({});
    return answer != QMessageBox::Cancel;
}

bool ComposerWindow::mayLeave(bool titles, bool palette) {
    if (palette && !mayLeaveEditor()) return false;
    const auto ask = [this](const char* what) {
        return QMessageBox::warning(this, "QzAnno Composer", QString("%1 changes that are not saved.").arg(what),
                                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    };
    const std::tuple<bool, const char*, bool (ComposerWindow::*)()> parts[] = {
        {titles && document_->titlesAreEdited(), "The titles have", &ComposerWindow::saveTitlesWhereTheyAre},
        {palette && document_->paletteIsEdited(), "The palette has", &ComposerWindow::savePaletteWhereItIs}};
    for (const auto& [isEdited, what, save] : parts) {
        if (!isEdited) continue;
        const int answer = ask(what);
        if (answer == QMessageBox::Cancel || (answer == QMessageBox::Save && !(this->*save)())) return false;
    }
    return true;
}

void ComposerWindow::closeEvent(QCloseEvent* event) {
    if (!mayLeave(true, true)) {
        event->ignore();
        return;
    }
    recoveryTimer_.stop();
    recovery_.reset();
    // The application ends with this window and closes the panel. The user has not closed it, so it must reopen next
    // time.
    if (const auto panel = QzAnnotationManager::sharedAnnotationManager()->window()) panel->setDelegate(nullptr);
    QMainWindow::closeEvent(event);
}

void ComposerWindow::keepRecovery(const QString& folder) {
    recoveryFolder_ = folder;
    recovery_ = std::make_unique<Recovery>(folder);
    recovery_->takeDown(document_->titles());
    recovery_->setFailureHook(this, [this](const std::string& error) { tellUnkept(error); });
    if (!Recovery::leftBehind(folder).isEmpty()) offerRecovery();
}

void ComposerWindow::offerRecovery() {
    RecoveryDialog dialog(Recovery::leftBehind(recoveryFolder_), this);
    if (dialog.exec() != QDialog::Accepted || !mayLeave(true, true)) return;
    const QString path = dialog.chosen();
    std::string error;
    if (!Recovery::restore(path, *document_, error)) {
        report(error);
        return;
    }
    acceptedLosses_.clear();
    describe();
    if (document_->titles().size() > 1) list_->setVisible(true);
    // Remove the crashed composer's copy only once there is another.
    if (recovery_->write(*document_, error) && recovery_->finish(error))
        QFile::remove(path);
    else
        report(error);
}

void ComposerWindow::writeRecovery() {
    std::string error;
    if (recovery_ && !recovery_->write(*document_, error)) tellUnkept(error);
}

void ComposerWindow::tellUnkept(const std::string& error) {
    statusBar()->showMessage(QString::fromStdString("Unsaved changes are not kept: " + error), 10000);
}

}  // namespace qz::composer
