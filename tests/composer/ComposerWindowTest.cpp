// The window, the panel and the editor as a user works with them: keys, clicks, dialogs.

#include <QAccessible>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <sys/wait.h>
#include <unistd.h>

#include "apps/qzanno-composer/ComposerWindow.h"
#include "apps/qzanno-composer/RecentFiles.h"
#include "apps/qzanno-composer/SafeAreaGuides.h"
#include "platform/foundation/Files.h"
#include "platform/ui/NSColorPanel.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/ui/Desk.h"

namespace qz::composer {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// The example captions and palette in the composer's window, with the panel.
class Composer : public testing::Test {
protected:
    Composer() {
        NSApplication::sharedApplication().setDelegate(document);
        manager->setAnnotationPalette(document->palette());
        manager->showWindow({});
        window.show();
        EXPECT_TRUE(window.openPalette(QZANNO_EXAMPLES "/broadcast.plist"));
        EXPECT_TRUE(window.openTitles(QZANNO_EXAMPLES "/first-title.vtt"));
        turnToTitle();
    }
    ~Composer() override {
        manager->editor()->close();
        manager->setAnnotationPalette({});
        manager->window()->orderOut({});
        NSApplication::sharedApplication().setDelegate({});
    }

    void turnToTitle() {
        window.activateWindow();
        window.textWidget()->setFocus();
        QApplication::processEvents();
    }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.textWidget(), which, modifiers);
        QApplication::processEvents();
    }
    /// What saving the picture now would write.
    QImage exported() {
        EXPECT_TRUE(window.savePicture(folder.file("shot.png")));
        QImage image(QString::fromStdString(folder.file("shot.png")));
        EXPECT_EQ(image.size(), QSize(1920, 1080));
        return image;
    }
    QAction* command(const QString& title) {
        for (QAction* menu : window.menuBar()->actions()) {
            for (QAction* action : menu->menu()->actions()) {
                if (action->text().remove('&') == title) return action;
            }
        }
        ADD_FAILURE() << title.toStdString();
        return nullptr;
    }
    /// Clicks, once a dialog is open, its button of that title; what the dialog says comes back.
    std::string answering(const QString& button, const std::function<void()>& act,
                          const std::function<void(QDialog&)>& prepare = {}) {
        std::string said;
        bool isAnswered = false;
        QTimer::singleShot(0, &window, [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* dialog = qobject_cast<QDialog*>(widget);
                if (!dialog || !dialog->isVisible()) continue;
                if (prepare) prepare(*dialog);
                if (auto* box = qobject_cast<QMessageBox*>(dialog)) said = box->text().toStdString();
                for (QPushButton* each : dialog->findChildren<QPushButton*>()) {
                    if (each->text().remove('&') != button) continue;
                    isAnswered = true;
                    return each->click();
                }
                dialog->reject();
            }
        });
        act();
        QApplication::processEvents();
        EXPECT_TRUE(isAnswered) << button.toStdString();
        return said;
    }
    QTableView* table() { return manager->window()->widget()->findChild<QTableView*>("paletteTable"); }
    int rowOf(const char* name) {
        for (int row = 0; row < table()->model()->rowCount(); ++row) {
            if (table()->model()->index(row, 1).data().toString() == name) return row;
        }
        ADD_FAILURE() << name;
        return 0;
    }
    Ref<QzAnnoKey> keyOf(const char* name) const {
        return document->palette()->findAnnoKey(NSString::stringWithUTF8String(name));
    }
    template <class Widget>
    Widget* inEditor(const char* binding) {
        for (Widget* each : manager->editor()->window()->widget()->findChildren<Widget*>()) {
            if (each->property("binding").toString() == binding || each->objectName() == binding) return each;
        }
        ADD_FAILURE() << binding;
        return nullptr;
    }

    test::LogCapture log;
    TemporaryFolder folder;
    Ref<TitleDocument> document = TitleDocument::documentWithPalette(QzAnnoPalette::init(), {1920, 1080});
    Ref<QzAnnotationManager> manager = QzAnnotationManager::sharedAnnotationManager();
    ComposerWindow window{document};
};

TEST_F(Composer, stylesAWordWithPanelAndEditorAndTakesItBackPixelForPixel) {
    const QImage plain = exported();
    key(Qt::Key_Home, Qt::ControlModifier);
    key(Qt::Key_Right, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_EQ(document->textView()->selectedRange().location, 0u);
    const int row = rowOf("Emphasis");
    QTest::mouseClick(table()->viewport(), Qt::LeftButton, {},
                      table()->visualRect(table()->model()->index(row, 0)).center());
    EXPECT_EQ(table()->model()->index(row, 0).data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_TRUE(document->title()->annotation(*keyOf("Emphasis"), 0));
    const QImage annotated = exported();
    EXPECT_NE(annotated, plain);

    const QPoint name = table()->visualRect(table()->model()->index(row, 1)).center();
    QTest::mouseClick(table()->viewport(), Qt::LeftButton, {}, name);
    QTest::mouseDClick(table()->viewport(), Qt::LeftButton, {}, name);
    ASSERT_TRUE(manager->editor()->isEditing());
    auto* isSet = inEditor<QCheckBox>("en_fgcolor");
    if (!isSet->isChecked()) isSet->click();
    inEditor<QPushButton>("fgcolor")->click();
    auto* colours = qobject_cast<QColorDialog*>(NSColorPanel::sharedColorPanel().widget());
    ASSERT_TRUE(colours && colours->isVisible());
    // The colour is dragged through many shades; only what is applied counts, as one step.
    for (int shade = 0; shade <= 100; shade += 10) colours->setCurrentColor(QColor(0, 255, shade));
    EXPECT_EQ(exported(), annotated);
    QPushButton* apply = nullptr;
    for (QPushButton* button : manager->editor()->window()->widget()->findChildren<QPushButton*>()) {
        if (button->text().remove('&') == "Apply") apply = button;
    }
    ASSERT_TRUE(apply);
    QTest::mouseClick(apply, Qt::LeftButton);
    NSColorPanel::sharedColorPanel().orderOut();
    const QImage coloured = exported();
    size_t greens = 0;
    for (int y = 0; y < coloured.height(); ++y) {
        for (int x = 0; x < coloured.width(); ++x) greens += coloured.pixel(x, y) == qRgba(0, 255, 100, 255);
    }
    EXPECT_GT(greens, 100u);
    manager->editor()->close();

    turnToTitle();
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(exported(), annotated);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(exported(), plain);
    EXPECT_FALSE(window.isWindowModified()) << "all is as it was opened";
}

TEST_F(Composer, replacesAnAnnotationInAllTitlesInOneStepFromAnyTitle) {
    const auto speaker = keyOf("Speaker"), warning = keyOf("Warning");
    const auto titlesWith = [&](const Ref<QzAnnoKey>& key) {
        std::vector<size_t> numbers;
        for (size_t i = 0; i < document->titles().size(); ++i) {
            for (const auto& run : document->titles()[i].text->runs()) {
                if (!run.keys->containsObject(*key)) continue;
                numbers.push_back(i + 1);
                break;
            }
        }
        return numbers;
    };
    ASSERT_THAT(titlesWith(speaker), ElementsAre(2, 4, 6, 8));
    ASSERT_THAT(titlesWith(warning), ElementsAre(3));
    answering(
        "Replace in All Titles", [&] { command("Replace Annotation…")->trigger(); },
        [](QDialog& dialog) {
            dialog.findChild<QComboBox*>("replaced")->setCurrentText("Speaker");
            dialog.findChild<QComboBox*>("replacement")->setCurrentText("Warning");
        });
    EXPECT_THAT(titlesWith(warning), ElementsAre(2, 3, 4, 6, 8));
    EXPECT_THAT(titlesWith(speaker), ElementsAre());
    command("Next Title")->trigger();
    turnToTitle();
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(titlesWith(speaker), ElementsAre(2, 4, 6, 8));
    EXPECT_THAT(titlesWith(warning), ElementsAre(3));
    command("Redo")->trigger();
    EXPECT_THAT(titlesWith(speaker), ElementsAre());
    // What was typed since must not be lost to the step back.
    QTest::keyClicks(window.textWidget(), "x");
    command("Next Title")->trigger();
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(titlesWith(speaker), ElementsAre(4, 6, 8));
    EXPECT_THAT(titlesWith(warning), ElementsAre(2, 3));
}

TEST_F(Composer, listsTheTitlesAndGoesToTheOneChosen) {
    auto* list = window.findChild<QListWidget*>();
    ASSERT_EQ(list->count(), 8);
    EXPECT_TRUE(list->isVisible());
    EXPECT_EQ(list->item(2)->text().toStdString(), "3  00:08.500  STORM WARNING – STAY INDOORS");
    key(Qt::Key_Tab);
    ASSERT_TRUE(list->hasFocus()) << "within reach of the keys";
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(document->current(), 1u);
    turnToTitle();
    key(Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(window.textWidget(), " So.");
    EXPECT_THAT(list->item(1)->text().toStdString(), HasSubstr("leaves. So."));
    command("Next Title")->trigger();
    EXPECT_EQ(list->currentRow(), 2);
}

TEST_F(Composer, showsSafeAreasWhereTheyAreByTheStandard) {
    const auto grab = [&] {
        QApplication::processEvents();
        return window.textWidget()->grab().toImage();
    };
    window.textWidget()->clearFocus();
    const QImage without = grab();
    command("Safe Areas")->trigger();
    const QImage with = grab();
    // Distances of the frames from the picture's left edge along the middle row, in parts of its width.
    const double w = window.textWidget()->width(), h = window.textWidget()->height();
    const double scale = std::min(w / 1920, h / 1080);
    const double left = std::floor((w - 1920 * scale) / 2), top = std::floor((h - 1080 * scale) / 2);
    std::vector<double> places;
    for (int x = 0; x < w / 4; ++x) {
        // The inner frame is dashed, so a strip of rows is looked at.
        for (int y = static_cast<int>(top + 540 * scale); y < top + 540 * scale + 20; ++y) {
            if (with.pixel(x, y) == without.pixel(x, y) || qGray(with.pixel(x, y)) < 200) continue;
            places.push_back((x - left) / (1920 * scale));
            break;
        }
    }
    EXPECT_THAT(places, testing::Contains(testing::DoubleNear(0.035, 0.003)));
    EXPECT_THAT(places, testing::Contains(testing::DoubleNear(0.05, 0.003)));
    const QImage picture = exported();
    command("Safe Areas")->trigger();
    EXPECT_EQ(grab(), without);
    EXPECT_EQ(exported(), picture) << "guides are no part of the picture";
}

TEST_F(Composer, asksBeforeUnsavedChangesAreLost) {
    EXPECT_FALSE(window.isWindowModified()) << "freshly opened";
    QTest::keyClicks(window.textWidget(), "!");
    EXPECT_TRUE(window.isWindowModified());
    EXPECT_THAT(answering("Cancel", [&] { EXPECT_FALSE(window.close()); }), HasSubstr("titles"));
    EXPECT_TRUE(window.isVisible());
    answering("Cancel", [&] { EXPECT_FALSE(window.openTitles(QZANNO_EXAMPLES "/scripts.vtt")); });
    EXPECT_EQ(document->titles().size(), 8u);
    ASSERT_TRUE(window.saveTitles(folder.file("mine.annostring")));
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_THAT(window.windowTitle().toStdString(), HasSubstr("mine.annostring"));
    test::giveAttributes(*document->palette(), document->palette()->lookupAnno(keyOf("Role")),
                         {{QzFontSizeAttribute, test::number(90)}});
    EXPECT_TRUE(window.isWindowModified());
    EXPECT_THAT(answering("Discard", [&] { EXPECT_TRUE(window.close()); }), HasSubstr("palette"));
}

TEST_F(Composer, recoversWhatACrashLeftAndNothingElse) {
    const QString place = QString::fromStdString(folder.file("recovery"));
    const auto files = [&] { return QDir(place).entryList({"*.recovery"}, QDir::Files); };
    window.keepRecovery(place);
    EXPECT_TRUE(files().isEmpty()) << "nothing edited, nothing kept";
    key(Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(window.textWidget(), " kept");
    QTRY_COMPARE_WITH_TIMEOUT(files().size(), 1, 5000);
    EXPECT_TRUE(Recovery::leftBehind(place).isEmpty()) << "its process lives";
    // A process that ends without tidying up leaves its file and its lock.
    const pid_t crashing = fork();
    if (crashing == 0) {
        Recovery theirs(place);
        std::string ignored;
        _exit(theirs.write(*document, ignored) ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(crashing, &status, 0), crashing);
    ASSERT_EQ(status, 0);
    ASSERT_EQ(Recovery::leftBehind(place).size(), 1);
    const QString left = Recovery::leftBehind(place).first();

    const auto other = TitleDocument::documentWithPalette(QzAnnoPalette::init(), {1920, 1080});
    {
        ComposerWindow next(other);
        next.show();
        EXPECT_THAT(answering("Recover", [&] { next.keepRecovery(place); }), HasSubstr("before changes were saved"));
        EXPECT_FALSE(QFile::exists(left));
        EXPECT_EQ(files().size(), 2) << "what was recovered is kept again until it is saved";
        ASSERT_EQ(other->titles().size(), 8u);
        EXPECT_THAT(other->title()->string()->utf8(), HasSubstr("program kept"));
        EXPECT_TRUE(
            other->title()->annotation(*other->palette()->findAnnoKey("Role"_ns), other->title()->length() - 1));
        EXPECT_EQ(other->titles()[1].start, 4.5);
        EXPECT_TRUE(next.isWindowModified()) << "it is in no file of the user's";
        EXPECT_EQ(other->picture()->pixelsWide(), document->picture()->pixelsWide());
        answering("Discard", [&] {
            other->markTitlesSaved();
            next.close();
        });
    }
    EXPECT_EQ(files().size(), 1);
    EXPECT_EQ(QDir(place).entryList(QDir::Files).size(), 2) << "nor do locks of processes that are gone stay";
    ASSERT_TRUE(window.saveTitles(folder.file("saved.annostring")));
    EXPECT_TRUE(files().isEmpty()) << "saved";

    writeText(folder.file("recovery/2-0.recovery"), "damaged");
    std::string error;
    EXPECT_FALSE(Recovery::restore(place + "/2-0.recovery", *other, error));
    EXPECT_THAT(error, HasSubstr("2-0.recovery: "));
    EXPECT_EQ(other->titles().size(), 8u) << "the document stays as it was";
}

TEST_F(Composer, writesRawPicturesAsTheyAreComposited) {
    ASSERT_TRUE(window.savePicture(folder.file("shot.rgba")));
    const Ref<NSData> raw = readFile(folder.file("shot.rgba"), nullptr);
    ASSERT_TRUE(raw);
    ASSERT_EQ(raw->view().size(), 1920u * 1080 * 4);
    const auto* bytes = reinterpret_cast<const uint8_t*>(raw->view().data());
    const QImage picture = exported().convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    size_t inked = 0, apart = 0;
    for (int y = 0; y < 1080; ++y) {
        for (int i = 0; i < 1920 * 4; ++i) {
            const int there = picture.constScanLine(y)[i], here = *bytes++;
            inked += here > 0;
            apart += std::abs(there - here) > 1;
        }
    }
    EXPECT_GT(inked, 10000u);
    EXPECT_EQ(apart, 0u) << "the PNG holds the same, straight";
}

TEST_F(Composer, keepsTheFilesOpenedLast) {
    for (int i = 0; i < RecentFiles::kPathsMax + 2; ++i) RecentFiles::note("/f/" + std::to_string(i) + ".vtt");
    RecentFiles::note("/f/5 & ü.vtt");
    RecentFiles::note("/f/8.vtt");
    const QStringList paths = RecentFiles::paths();
    ASSERT_EQ(paths.size(), RecentFiles::kPathsMax);
    EXPECT_EQ(paths[0], "/f/8.vtt");
    EXPECT_EQ(paths[1], "/f/5 & ü.vtt");
    EXPECT_EQ(paths[2], "/f/9.vtt");
    EXPECT_EQ(paths.count("/f/8.vtt"), 1);
    ASSERT_TRUE(window.openTitles(QZANNO_EXAMPLES "/scripts.vtt"));
    auto* menu = window.findChild<RecentFiles*>();
    emit menu->aboutToShow();
    EXPECT_EQ(menu->actions().first()->text().toStdString(), "&1  scripts.vtt");
    RecentFiles::note(QZANNO_EXAMPLES "/first-title.vtt");
    emit menu->aboutToShow();
    menu->actions().first()->trigger();
    EXPECT_EQ(document->titles().size(), 8u);
}

TEST_F(Composer, warnsOfArchivedNamesThatThePaletteLacks) {
    ASSERT_TRUE(window.saveTitles(folder.file("t.annostring")));
    ASSERT_TRUE(document->palette()->removeAnno(keyOf("Speaker")));
    std::string error;
    const auto file = readTitleFile(folder.file("t.annostring"), document->palette(), error);
    ASSERT_TRUE(file) << error;
    EXPECT_THAT(file->warnings, ElementsAre(testing::AllOf(HasSubstr("t.annostring: "), HasSubstr("\"Speaker\""))));
}

TEST_F(Composer, namesEveryControlThatTakesTheKeysForReadingPrograms) {
    int count = 0;
    manager->editor()->setAnno(document->palette()->lookupAnno(keyOf("Role")));
    QApplication::processEvents();
    for (QWidget* top :
         {static_cast<QWidget*>(&window), manager->window()->widget(), manager->editor()->window()->widget()}) {
        for (QWidget* widget : top->findChildren<QWidget*>()) {
            if (!(widget->focusPolicy() & Qt::TabFocus) || !widget->isVisible() || widget->focusProxy()) continue;
            QAccessibleInterface* read = QAccessible::queryAccessibleInterface(widget);
            ASSERT_TRUE(read);
            ++count;
            EXPECT_FALSE(read->text(QAccessible::Name).isEmpty())
                << top->windowTitle().toStdString() << ": " << widget->metaObject()->className() << " "
                << widget->objectName().toStdString();
        }
    }
    EXPECT_GT(count, 10);
}

}  // namespace
}  // namespace qz::composer
