#pragma once

#include <QMainWindow>

#include "apps/qzanno-composer/TitleDocument.h"
#include "platform/ui/NSTextViewWidget.h"

class QLabel;

namespace qz::composer {

/// The window of the composer: the title over its frame, and the commands.
class ComposerWindow final : public QMainWindow {
public:
    explicit ComposerWindow(const Ref<TitleDocument>& document);
    ~ComposerWindow() override;

    void setFrame(const Ref<NSBitmapImageRep>& frame) { text_->setBackdrop(frame); }
    QWidget* textWidget() const { return text_->widget(); }

    // Commands; each tells the user in a panel what went wrong.
    bool openTitles(const std::string& path);
    bool openPalette(const std::string& path);
    bool openFrame(const std::string& path);
    bool saveTitles(const std::string& path);
    bool savePalette(const std::string& path);
    bool savePicture(const std::string& path);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void addMenus();
    void addEditCommand(class QMenu& menu, const char* title, const char* action, int standardKey);
    void showTitle(size_t title);
    void describe();
    bool report(const std::string& message);

    const Ref<TitleDocument> document_;
    Ref<NSTextViewWidget> text_;
    QAction* previous_ = nullptr;
    QAction* next_ = nullptr;
    QLabel* place_ = nullptr;
};

}  // namespace qz::composer
