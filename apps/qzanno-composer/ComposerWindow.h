#pragma once

#include <QMainWindow>
#include <QTimer>

#include "QzAnno/platform/ui/NSTextViewWidget.h"
#include "apps/qzanno-composer/Recovery.h"
#include "apps/qzanno-composer/TitleDocument.h"

class QLabel;

namespace qz::composer {

class RecentFiles;
class SafeAreaGuides;
class TitleList;

/// The window of the composer: the title over its frame, the list of titles, and the commands.
class ComposerWindow final : public QMainWindow {
public:
    explicit ComposerWindow(const Ref<TitleDocument>& document);
    ~ComposerWindow() override;

    void setFrame(const Ref<NSBitmapImageRep>& frame) { text_->setBackdrop(frame); }
    void showSafeAreas() { safeAreas_->setChecked(true); }
    /// Before the window is shown: takes the place where it was left, or one that leaves room for the panel and, on a
    /// large screen, for the editor.
    void takePlace();
    QWidget* textWidget() const { return text_->widget(); }
    /// Shows the files that the document came from or went to; an empty path leaves things as they are.
    void setFiles(const std::string& titles, const std::string& palette);

    // Commands; each tells the user in a panel what went wrong. What opens something asks first about unsaved changes
    // of what it takes the place of.

    /// A file of any kind the composer reads, told by its ending.
    bool open(const std::string& path);
    bool openTitles(const std::string& path);
    bool openPalette(const std::string& path);
    bool openFrame(const std::string& path);
    /// Captions (.vtt) or an archive (.annostring), by the ending. Asks first when the file will not hold all that the
    /// titles are.
    bool saveTitles(const std::string& path);
    bool savePalette(const std::string& path);
    /// A PNG file, or, by the ending .rgba, premultiplied RGBA rows from the top without a header.
    bool savePicture(const std::string& path);
    void replaceAnnotation();

    /// Keeps a copy of unsaved changes in the folder from now on, and offers what crashes have left there.
    void keepRecovery(const QString& folder);
    void offerRecovery();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void addMenus();
    void addFileMenu();
    void addEditMenu();
    void addViewMenu();
    void addEditCommand(class QMenu& menu, const char* title, const char* action, int standardKey);
    void showTitle(size_t title);
    void documentChanged();
    void describe();
    bool report(const std::string& message);
    void choose(const char* title, const QString& filter, bool (ComposerWindow::*read)(const std::string&));
    bool chooseToSave(const char* title, const QString& filter, bool (ComposerWindow::*write)(const std::string&),
                      const std::string& proposed);
    bool saveTitlesWhereTheyAre();
    bool chooseTitlesFile();
    bool savePaletteWhereItIs();
    bool choosePaletteFile();
    bool mayLose(const std::vector<std::string>& losses);
    void takeTime(size_t title, bool isEnd, const QString& text);
    /// False when the user wants to stay. Asks nothing when nothing of that is edited.
    bool mayLeave(bool titles, bool palette);
    bool mayLeaveEditor();
    void writeRecovery();
    void tellUnkept(const std::string& error);

    const Ref<TitleDocument> document_;
    Ref<NSTextViewWidget> text_;
    // What the user has agreed to lose in the titles' file, which is not asked again.
    std::vector<std::string> acceptedLosses_;
    QAction* previous_ = nullptr;
    QAction* next_ = nullptr;
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* replace_ = nullptr;
    QAction* recover_ = nullptr;
    QAction* safeAreas_ = nullptr;
    QLabel* place_ = nullptr;
    TitleList* list_ = nullptr;
    SafeAreaGuides* guides_ = nullptr;
    QString recoveryFolder_;
    std::unique_ptr<Recovery> recovery_;
    // Runs from the first change on that the recovery file does not have.
    QTimer recoveryTimer_;
};

}  // namespace qz::composer
