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
    /// Call before showing the window: moves it to where it was left, or to a place that leaves room for the panel and,
    /// on a large screen, for the editor.
    void takePlace();
    QWidget* textWidget() const { return text_->widget(); }
    /// Shows the files that the document was read from or saved to; an empty path changes nothing.
    void setFiles(const std::string& titles, const std::string& palette);

    // Commands. Each tells the user in a panel if something goes wrong. Opening a file asks first about unsaved changes
    // in what it replaces.

    /// Opens any kind of file that the composer reads, by its ending.
    bool open(const std::string& path);
    bool openTitles(const std::string& path);
    bool openPalette(const std::string& path);
    bool openFrame(const std::string& path);
    /// Captions or an archive, by the ending. Asks first if the file cannot hold everything in the titles.
    bool saveTitles(const std::string& path);
    bool savePalette(const std::string& path);
    /// A PNG file, or, by the ending .rgba, premultiplied RGBA rows from the top without a header.
    bool savePicture(const std::string& path);
    void replaceAnnotation();

    /// From now on keeps a copy of unsaved changes in the folder, and offers copies that crashes have left there.
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
    /// "Titles (*.srt *.vtt)", as file dialogs have it.
    static QString filterOf(std::string_view name, const std::vector<std::string>& endings);
    void choose(const char* title, const QString& filter, bool (ComposerWindow::*read)(const std::string&));
    bool chooseToSave(const char* title, const QString& filter, bool (ComposerWindow::*write)(const std::string&),
                      const std::string& proposed);
    bool saveTitlesWhereTheyAre();
    bool chooseTitlesFile();
    bool savePaletteWhereItIs();
    bool choosePaletteFile();
    bool mayLose(const std::vector<std::string>& losses);
    void takeTime(size_t title, bool isEnd, const QString& text);
    /// Returns false if the user wants to stay. Does not ask if there are no unsaved changes.
    bool mayLeave(bool titles, bool palette);
    bool mayLeaveEditor();
    void writeRecovery();
    void tellUnkept(const std::string& error);

    const Ref<TitleDocument> document_;
    Ref<NSTextViewWidget> text_;
    // Losses in the titles' file that the user has accepted, not to be asked about again.
    std::vector<std::string> acceptedLosses_;
    // Where this window has written the titles; empty since others were opened.
    std::string writtenFile_;
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
    // Runs from the first change that is not in the recovery file.
    QTimer recoveryTimer_;
};

}  // namespace qz::composer
