#pragma once

#include <QApplication>
#include <QTableView>
#include <QTest>
#include <QWidget>
#include <algorithm>

#include <gmock/gmock.h>

#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSTextViewWidget.h"
#include "QzAnno/ui/QzAnnotationManager.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Palettes.h"

namespace qz::test {

/// A desk: the shared panel on a palette with annotations A to D, D on top, and a document window with a text view.
/// Keeps the log quiet.
class Desk : public testing::Test {
protected:
    Desk() {
        NSApplication::sharedApplication();
        document.setWindowTitle("Document");
        document.resize(400, 200);
        textWidget->widget()->resize(400, 200);
        for (const char* name : {"A", "B", "C", "D"}) keys.push_back(addAnnotation(*palette, name, {}));
        palette->undoManager()->endEvent();
        palette->undoManager()->removeAllActions();
        manager->clearResponder(view);
        manager->setAnnotationPalette(palette);
    }
    ~Desk() override {
        manager->editor()->close();
        manager->clearResponder(view);
        manager->setAnnotationPalette({});
        manager->window()->orderOut({});
    }

    void showDocument() {
        document.show();
        document.activateWindow();
        textWidget->widget()->setFocus();
        QApplication::processEvents();
    }

    /// Puts the text into the view, each key over the whole of it, or over a range.
    void setTitle(const char* text, const std::vector<std::pair<Ref<QzAnnoKey>, Range>>& runs) {
        const auto title = QzMutableAnnoString::initWithString(NSString::stringWithUTF8String(text));
        for (const auto& [key, range] : runs) title->addAnno(key, range);
        const auto formatter = QzAnnoStringFormatter::init();
        formatter->setPalette(palette);
        view->textStorage()->setAttributedString(*formatter->attributedStringForObjectValue(title));
    }

    QzAnnoPaletteAsTable& table() { return *manager->ptable(); }
    QTableView* tableWidget() { return manager->window()->widget()->findChild<QTableView*>("paletteTable"); }
    QWidget* editorControl(const char* name) { return editorWindow()->findChild<QWidget*>(name); }
    QWidget* editorWindow() {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() == "editor") return window;
        }
        return nullptr;
    }
    QPoint centerOf(int row, int column) {
        return tableWidget()->visualRect(tableWidget()->model()->index(row, column)).center();
    }
    void click(int row, int column, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mouseClick(tableWidget()->viewport(), Qt::LeftButton, modifiers, centerOf(row, column));
    }
    Qt::CheckState stateOf(int row) {
        return static_cast<Qt::CheckState>(tableWidget()->model()->index(row, 0).data(Qt::CheckStateRole).toInt());
    }
    std::string nameOf(int row) { return tableWidget()->model()->index(row, 1).data().toString().toStdString(); }
    /// The names in the table, from top to bottom.
    std::string order() {
        std::string names;
        for (int row = 0; row < tableWidget()->model()->rowCount(); ++row) names += nameOf(row) + " ";
        return names;
    }
    static std::string namesOf(const Ref<NSSet>& set) {
        std::string names;
        if (set) {
            for (const auto& key : set->objects<QzAnnoKey>()) names += key->name()->utf8();
        }
        std::ranges::sort(names);
        return names;
    }
    /// The annotations of each character of the text: "A AB B".
    std::string coverage() {
        std::string lists;
        for (uint32_t i = 0; i < view->textStorage()->length(); ++i) {
            lists +=
                namesOf(view->textStorage()->attributesAtIndex(i)->objectForKey<NSSet>(*QzAnnoAttributeName)) + " ";
        }
        return lists;
    }

    LogCapture log;
    Ref<QzAnnoPalette> palette = paletteWithGlobals({});
    std::vector<Ref<QzAnnoKey>> keys;
    Ref<QzAnnotationManager> manager = QzAnnotationManager::sharedAnnotationManager();
    QWidget document;
    Ref<NSTextView> view = NSTextView::init();
    Ref<NSTextViewWidget> textWidget = NSTextViewWidget::initWithTextView(view, &document);
};

}  // namespace qz::test
