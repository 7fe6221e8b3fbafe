#include "apps/qzanno-composer/ComposerWindow.h"

#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>

#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "apps/qzanno-composer/RecentFiles.h"
#include "apps/qzanno-composer/ReplaceAnnotationDialog.h"
#include "apps/qzanno-composer/SafeAreaGuides.h"
#include "apps/qzanno-composer/TitleList.h"
#include "captions/ClockTime.h"
#include "captions/Format.h"
#include "platform/ui/WindowFrames.h"

namespace qz::composer {
namespace {

constexpr int kRecoveryDelayMilliseconds = 2000;
constexpr int kListWidth = 330;
constexpr QSize kUsualSize(1120, 720);

QString textOfTime(double seconds) {
    return QString::fromStdString(clockOf(seconds));
}

}  // namespace

ComposerWindow::ComposerWindow(const Ref<TitleDocument>& document) : document_(document) {
    text_ = NSTextViewWidget::initWithTextView(document_->textView(), this);
    text_->setAccessibleName("Title");
    text_->setInsertionPointOfEmptyText([this] { return document_->insertionPointOfEmptyTitle(); });
    setCentralWidget(text_->widget());
    guides_ = new SafeAreaGuides(text_);
    list_ = new TitleList(this);
    list_->setChosen([this](size_t title) { showTitle(title); });
    list_->setTimeEntered([this](size_t title, bool isEnd, const QString& text) { takeTime(title, isEnd, text); });
    addDockWidget(Qt::LeftDockWidgetArea, list_);
    resizeDocks({list_}, {kListWidth}, Qt::Horizontal);
    list_->setVisible(document_->titles().size() > 1);
    place_ = new QLabel;
    statusBar()->addPermanentWidget(place_);
    addMenus();
    recoveryTimer_.setSingleShot(true);
    recoveryTimer_.setInterval(kRecoveryDelayMilliseconds);
    connect(&recoveryTimer_, &QTimer::timeout, this, &ComposerWindow::writeRecovery);
    document_->setChangeHook([this] { documentChanged(); });
    describe();
    resize(kUsualSize);
    keepFrame(*this, "Composer");
    text_->widget()->setFocus();
}

ComposerWindow::~ComposerWindow() {
    document_->setChangeHook({});
}

void ComposerWindow::takePlace() {
    // Widths of the panel and of the editor, and of the desktop's border around a window.
    constexpr int kPanelCharacters = 42, kEditorCharacters = 72, kBorder = 40;
    const int panelWidth = fontMetrics().averageCharWidth() * kPanelCharacters;
    const int editorWidth = fontMetrics().averageCharWidth() * kEditorCharacters;
    if (restoreFrame(*this)) return;
    const QRect available = screen()->availableGeometry();
    resize(kUsualSize.boundedTo({available.width() - panelWidth, available.height() - kBorder}));
    const int beside = available.width() - width() < editorWidth ? panelWidth : editorWidth;
    // Rather high, since the editor goes below the panel.
    move(available.left() + (available.width() - width() - beside) / 2,
         available.top() + (available.height() - kBorder - height()) / 4);
}

void ComposerWindow::addMenus() {
    addFileMenu();
    addEditMenu();
    addViewMenu();
    // Their shortcuts work in the panel and the editor too.
    for (QAction* menu : menuBar()->actions()) {
        for (QAction* action : menu->menu()->actions()) action->setShortcutContext(Qt::ApplicationShortcut);
    }
}

void ComposerWindow::addFileMenu() {
    QMenu* file = menuBar()->addMenu("&File");
    file->addAction("&Open Titles…", QKeySequence::Open, this, [this] {
        choose("Open Titles", filterOf("Titles", endingsOf(Format::any)), &ComposerWindow::openTitles);
    });
    file->addAction("Open &Palette…", QKeySequence("Ctrl+Shift+O"), this, [this] {
        choose("Open Palette", "Palettes (*.plist *.annopalette)", &ComposerWindow::openPalette);
    });
    file->addAction("Open &Frame…", this,
                    [this] { choose("Open Frame", "Pictures (*.png)", &ComposerWindow::openFrame); });
    file->addMenu(new RecentFiles(this, [this](const std::string& path) { open(path); }));
    file->addSeparator();
    file->addAction("&Save Titles", QKeySequence::Save, this, &ComposerWindow::saveTitlesWhereTheyAre);
    file->addAction("Save &Titles As…", this, &ComposerWindow::chooseTitlesFile);
    file->addAction("Save P&alette", QKeySequence("Ctrl+Shift+S"), this, &ComposerWindow::savePaletteWhereItIs);
    file->addAction("Save Palette As…", this, &ComposerWindow::choosePaletteFile);
    file->addAction("Save P&icture…", QKeySequence("Ctrl+E"), this, [this] {
        chooseToSave("Save Picture", "PNG pictures (*.png);;Premultiplied RGBA (*.rgba)", &ComposerWindow::savePicture,
                     "title.png");
    });
    file->addSeparator();
    recover_ = file->addAction("Reco&ver Unsaved Work…", this, &ComposerWindow::offerRecovery);
    connect(file, &QMenu::aboutToShow, this,
            [this] { recover_->setEnabled(recovery_ && !Recovery::leftBehind(recoveryFolder_).isEmpty()); });
    file->addSeparator();
    file->addAction("&Quit", QKeySequence::Quit, this, &QWidget::close);
}

void ComposerWindow::addEditMenu() {
    QMenu* edit = menuBar()->addMenu("&Edit");
    addEditCommand(*edit, "&Undo", "undo:", QKeySequence::Undo);
    addEditCommand(*edit, "&Redo", "redo:", QKeySequence::Redo);
    undo_ = edit->actions()[0];
    redo_ = edit->actions()[1];
    edit->addSeparator();
    addEditCommand(*edit, "Cu&t", "cut:", QKeySequence::Cut);
    addEditCommand(*edit, "&Copy", "copy:", QKeySequence::Copy);
    addEditCommand(*edit, "&Paste", "paste:", QKeySequence::Paste);
    addEditCommand(*edit, "Select &All", "selectAll:", QKeySequence::SelectAll);
    edit->addSeparator();
    edit->addAction("&New Title", QKeySequence::New, this, [this] {
        document_->insertTitle();
        list_->setVisible(true);
        text_->widget()->setFocus();
    });
    edit->addAction("&Delete Title", this, [this] { document_->removeTitle(); });
    replace_ =
        edit->addAction("Rep&lace Annotation…", QKeySequence("Ctrl+H"), this, &ComposerWindow::replaceAnnotation);
    // While open, the menu shows what is possible; while closed, its shortcuts stay enabled.
    connect(edit, &QMenu::aboutToShow, this, [this] {
        const NSUndoManager& steps = *document_->undoManager();
        const auto name = [](const char* title, const std::string& step) {
            return QString(title) + (step.empty() ? QString() : " " + QString::fromStdString(step));
        };
        undo_->setText(name("&Undo", steps.undoActionName()));
        undo_->setEnabled(steps.canUndo());
        redo_->setText(name("&Redo", steps.redoActionName()));
        redo_->setEnabled(steps.canRedo());
        replace_->setEnabled(document_->palette()->maxPriority() > 1);
    });
    connect(edit, &QMenu::aboutToHide, this, [this] {
        for (QAction* action : {undo_, redo_, replace_}) action->setEnabled(true);
    });
}

void ComposerWindow::addViewMenu() {
    QMenu* view = menuBar()->addMenu("&View");
    view->addAction("&Annotations", QKeySequence("Ctrl+T"), this, [] {
        const auto manager = QzAnnotationManager::sharedAnnotationManager();
        manager->showWindow({});
        // When opened by a shortcut, the panel takes the focus.
        manager->window()->makeKeyAndOrderFront({});
    });
    QAction* list = list_->toggleViewAction();
    list->setText("&List of Titles");
    list->setShortcut(QKeySequence("Ctrl+L"));
    view->addAction(list);
    safeAreas_ = view->addAction("&Safe Areas", QKeySequence("Ctrl+G"));
    safeAreas_->setCheckable(true);
    connect(safeAreas_, &QAction::toggled, guides_, &QWidget::setVisible);
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
}

void ComposerWindow::takeTime(size_t title, bool isEnd, const QString& text) {
    const Title& former = document_->titles()[title];
    const auto time = secondsOfClock(text.toStdString());
    if (!time) return list_->refuse(title, QString("\"%1\" is not a time; write it as 01:02.500").arg(text));
    const double start = isEnd ? former.start.value_or(0) : *time;
    const double end = isEnd ? *time : former.end.value_or(*time);
    if (document_->setTimes(title, start, end)) return;
    const QString problem = isEnd ? "Title %1 would end at %2, before it starts; change its start first"
                                  : "Title %1 would start at %2, after it ends; change its end first";
    list_->refuse(title, problem.arg(title + 1).arg(textOfTime(*time)));
}

void ComposerWindow::describe() {
    const size_t count = document_->titles().size();
    const size_t current = document_->current();
    const Title& title = document_->titles()[current];
    QString text = QString("Title %1 of %2").arg(current + 1).arg(count);
    if (title.start && title.end) text += QString("   %1 – %2").arg(textOfTime(*title.start), textOfTime(*title.end));
    const NSSize screen = document_->screenSize();
    text += QString("   %1 × %2").arg(screen.width).arg(screen.height);
    place_->setText(text);
    previous_->setEnabled(current > 0);
    next_->setEnabled(current + 1 < count);
    list_->list(document_->titles(), current);
    const auto nameOf = [](const std::string& path) { return QFileInfo(QString::fromStdString(path)).fileName(); };
    const auto& [titlesFile, paletteFile] = std::tie(document_->titlesFile(), document_->paletteFile());
    const QString name = titlesFile.empty() ? QString("Untitled") : nameOf(titlesFile);
    const QString palette = paletteFile.empty() ? QString() : " – " + nameOf(paletteFile);
    setWindowTitle(name + "[*]" + palette + " – QzAnno Composer");
    setWindowModified(document_->titlesAreEdited() || document_->paletteIsEdited());
}

void ComposerWindow::documentChanged() {
    describe();
    if (recovery_ && isWindowModified() && !recoveryTimer_.isActive()) recoveryTimer_.start();
    if (recovery_ && !isWindowModified()) {
        recoveryTimer_.stop();
        recovery_->remove();
        recovery_->takeDown(document_->titles());
    }
}

void ComposerWindow::replaceAnnotation() {
    ReplaceAnnotationDialog dialog(*document_->palette(), this);
    if (dialog.exec() != QDialog::Accepted) return;
    const size_t count = document_->replaceEverywhere(dialog.replacedKey(), dialog.replacementKey());
    statusBar()->showMessage(count == 1 ? QString("1 title has changed") : QString("%1 titles have changed").arg(count),
                             10000);
}

}  // namespace qz::composer
