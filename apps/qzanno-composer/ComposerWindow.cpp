#include "apps/qzanno-composer/ComposerWindow.h"

#include <QCloseEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QToolBar>

#include "QzAnno_AnnotatedTextFramework/ui/QzAnnotationManager.h"
#include "platform/foundation/Files.h"
#include "platform/graphics/PNG.h"
#include "platform/ui/NSApplication.h"

namespace qz::composer {
namespace {

QString clock(double seconds) {
    const auto total = static_cast<qint64>(seconds * 1000 + 0.5);
    return QString("%1:%2:%3.%4")
        .arg(total / 3600000, 2, 10, QChar('0'))
        .arg(total / 60000 % 60, 2, 10, QChar('0'))
        .arg(total / 1000 % 60, 2, 10, QChar('0'))
        .arg(total % 1000, 3, 10, QChar('0'));
}

}  // namespace

ComposerWindow::ComposerWindow(const Ref<TitleDocument>& document) : document_(document) {
    setWindowTitle("QzAnno Composer");
    text_ = NSTextViewWidget::initWithTextView(document_->textView(), this);
    text_->setAccessibleName("Title");
    text_->setInsertionPointOfEmptyText([this] { return document_->insertionPointOfEmptyTitle(); });
    setCentralWidget(text_->widget());
    place_ = new QLabel;
    statusBar()->addPermanentWidget(place_);
    addMenus();
    describe();
    resize(1120, 720);
    text_->widget()->setFocus();
}

ComposerWindow::~ComposerWindow() = default;

void ComposerWindow::addMenus() {
    const auto choose = [this](const char* title, const char* filter, auto open) {
        return [this, title, filter, open] {
            const QString path = QFileDialog::getOpenFileName(this, title, {}, filter);
            if (!path.isEmpty()) (this->*open)(path.toStdString());
        };
    };
    const auto save = [this](const char* title, const char* filter, auto write) {
        return [this, title, filter, write] {
            const QString path = QFileDialog::getSaveFileName(this, title, {}, filter);
            if (!path.isEmpty()) (this->*write)(path.toStdString());
        };
    };
    QMenu* file = menuBar()->addMenu("&File");
    file->addAction("&Open Titles…", QKeySequence::Open, this,
                    choose("Open Titles", "Titles (*.vtt *.txt *.annostring)", &ComposerWindow::openTitles));
    file->addAction("Open &Palette…", this, choose("Open Palette", "Palettes (*.plist)", &ComposerWindow::openPalette));
    file->addAction("Open &Frame…", this, choose("Open Frame", "Pictures (*.png)", &ComposerWindow::openFrame));
    file->addSeparator();
    file->addAction("&Save Titles…", QKeySequence::Save, this,
                    save("Save Titles", "Titles (*.annostring)", &ComposerWindow::saveTitles));
    file->addAction("Save P&alette…", this, save("Save Palette", "Palettes (*.plist)", &ComposerWindow::savePalette));
    file->addAction("Save P&icture…", this, save("Save Picture", "Pictures (*.png)", &ComposerWindow::savePicture));
    file->addSeparator();
    file->addAction("&Quit", QKeySequence::Quit, this, &QWidget::close);

    QMenu* edit = menuBar()->addMenu("&Edit");
    addEditCommand(*edit, "&Undo", "undo:", QKeySequence::Undo);
    addEditCommand(*edit, "&Redo", "redo:", QKeySequence::Redo);
    edit->addSeparator();
    addEditCommand(*edit, "Cu&t", "cut:", QKeySequence::Cut);
    addEditCommand(*edit, "&Copy", "copy:", QKeySequence::Copy);
    addEditCommand(*edit, "&Paste", "paste:", QKeySequence::Paste);
    addEditCommand(*edit, "Select &All", "selectAll:", QKeySequence::SelectAll);

    QMenu* view = menuBar()->addMenu("&View");
    view->addAction("&Annotations", QKeySequence("Ctrl+T"), this,
                    [] { QzAnnotationManager::sharedAnnotationManager()->showWindow({}); });
    view->addAction("&Checkerboard", this, [this] { setFrame({}); });
    view->addSeparator();
    previous_ = view->addAction("&Previous Title", QKeySequence("Ctrl+PgUp"), this,
                                [this] { showTitle(document_->current() - 1); });
    next_ = view->addAction("&Next Title", QKeySequence("Ctrl+PgDown"), this,
                            [this] { showTitle(document_->current() + 1); });
}

void ComposerWindow::addEditCommand(QMenu& menu, const char* title, const char* action, int standardKey) {
    menu.addAction(title, QKeySequence(static_cast<QKeySequence::StandardKey>(standardKey)), this,
                   [action] { NSApplication::sharedApplication().sendAction(action, {}, {}); });
}

void ComposerWindow::showTitle(size_t title) {
    document_->show(title);
    describe();
}

void ComposerWindow::describe() {
    const size_t count = document_->titles().size();
    const size_t current = document_->current();
    const Title& title = document_->titles()[current];
    QString text = QString("Title %1 of %2").arg(current + 1).arg(count);
    if (title.start && title.end) text += QString("   %1 – %2").arg(clock(*title.start), clock(*title.end));
    const NSSize screen = document_->screenSize();
    text += QString("   %1 × %2").arg(screen.width).arg(screen.height);
    place_->setText(text);
    previous_->setEnabled(current > 0);
    next_->setEnabled(current + 1 < count);
}

bool ComposerWindow::report(const std::string& message) {
    auto* box =
        new QMessageBox(QMessageBox::Warning, windowTitle(), QString::fromStdString(message), QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
    return false;
}

bool ComposerWindow::openTitles(const std::string& path) {
    std::string error;
    auto file = readTitleFile(path, document_->palette(), error);
    if (!file) return report(error);
    document_->setTitles(std::move(file->titles));
    describe();
    if (!file->warnings.empty()) statusBar()->showMessage(QString::fromStdString(file->warnings.front()), 10000);
    return true;
}

bool ComposerWindow::openPalette(const std::string& path) {
    std::string error;
    const Ref<QzAnnoPalette> palette = readPaletteFile(path, error);
    if (!palette) return report(error);
    document_->replacePalette(palette);
    return true;
}

bool ComposerWindow::openFrame(const std::string& path) {
    std::string reason;
    const Ref<NSData> file = readFile(path, &reason);
    const Ref<NSBitmapImageRep> frame = file ? bitmapFromPNG(*file, &reason) : nullptr;
    if (!frame) return report(path + ": " + reason);
    setFrame(frame);
    return true;
}

bool ComposerWindow::saveTitles(const std::string& path) {
    std::string error;
    return writeTitleFile(path, document_->titles(), document_->palette(), error) || report(error);
}

bool ComposerWindow::savePalette(const std::string& path) {
    std::string reason = "an attribute of the palette has no form in a property list";
    const Ref<NSData> list = document_->palette()->pListData();
    return (list && writeFileAtomically(path, list->bytes(), &reason)) || report(path + ": " + reason);
}

bool ComposerWindow::savePicture(const std::string& path) {
    std::string reason = "no picture of this size can be made";
    const Ref<NSBitmapImageRep> picture = document_->picture();
    return (picture && writeFileAtomically(path, pngFromBitmap(*picture)->bytes(), &reason)) ||
           report(path + ": " + reason);
}

void ComposerWindow::closeEvent(QCloseEvent* event) {
    // The application ends with this window and closes the panel, which the user has not: it is to come back.
    if (const auto panel = QzAnnotationManager::sharedAnnotationManager()->window()) panel->setDelegate(nullptr);
    QMainWindow::closeEvent(event);
}

}  // namespace qz::composer
