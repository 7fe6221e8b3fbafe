// The window, the panel and the editor as a user works with them: keys, clicks, dialogs.

#include <QAccessible>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QTreeWidget>
#include <set>

#include <sys/wait.h>
#include <unistd.h>

#include "QzAnno/platform/foundation/Files.h"
#include "apps/qzanno-composer/ComposerWindow.h"
#include "apps/qzanno-composer/RecentFiles.h"
#include "apps/qzanno-composer/TitleTimes.h"
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
    /// The picture that saving would write now.
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
    /// Clicks the button with that title once a dialog is open, and returns the dialog's text.
    std::string answering(const QString& button, const std::function<void()>& act,
                          const std::function<void(QDialog&)>& prepare = {}) {
        std::string said;
        bool isAnswered = false;
        QTimer::singleShot(0, &window, [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* dialog = qobject_cast<QDialog*>(widget);
                if (!dialog || !dialog->isVisible()) continue;
                if (prepare) prepare(*dialog);
                if (auto* box = qobject_cast<QMessageBox*>(dialog))
                    said = (box->text() + "\n" + box->informativeText()).toStdString();
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
    EXPECT_TRUE(document->title()->annotation(keyOf("Emphasis"), 0));
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
    // Drags the colour through many shades; only applying counts, as one step.
    for (int shade = 0; shade <= 100; shade += 10) colours->setCurrentColor(QColor(0, 255, shade));
    EXPECT_EQ(exported(), annotated);
    inEditor<QPushButton>("applyButton")->click();
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
            const auto runs = document->titles()[i].text->runs();
            if (std::ranges::any_of(runs, [&](const auto& run) { return run.keys->containsObject(*key); }))
                numbers.push_back(i + 1);
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
}

TEST_F(Composer, listsTheTitlesWithTheirTimesToGoToAndToEdit) {
    auto* list = window.findChild<QTreeWidget*>();
    const auto line = [&](int row) {
        std::string text;
        for (int column = 0; column < 4; ++column) text += list->topLevelItem(row)->text(column).toStdString() + " | ";
        return text;
    };
    ASSERT_EQ(list->topLevelItemCount(), 8);
    EXPECT_TRUE(list->isVisible());
    EXPECT_EQ(line(2), "3 | 00:08.500 | 00:12.000 | STORM WARNING – STAY INDOORS | ");
    key(Qt::Key_Tab);
    ASSERT_TRUE(list->hasFocus()) << "within reach of the keys";
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(document->current(), 1u);
    const auto enter = [&](Qt::KeyboardModifiers modifiers, const char* time) {
        QTest::keyClick(list, Qt::Key_F2, modifiers);
        auto* field = list->findChild<QLineEdit*>();
        if (!field) return std::string("no field");
        field->setText(time);
        QTest::keyClick(field, Qt::Key_Return);
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return line(1).substr(4, 21);
    };
    EXPECT_EQ(enter({}, "0:05"), "00:05.000 | 00:08.000");
    EXPECT_EQ(enter(Qt::ShiftModifier, "8,25"), "00:05.000 | 00:08.250");
    EXPECT_EQ(enter(Qt::ShiftModifier, "4"), "00:05.000 | 00:08.250");
    // Below the title, until something is taken.
    const auto* refusal = list->findChild<QLabel*>();
    EXPECT_THAT(refusal->text().toStdString(), HasSubstr("before it starts"));
    EXPECT_EQ(enter({}, "10"), "00:05.000 | 00:08.250");
    EXPECT_THAT(refusal->text().toStdString(), HasSubstr("after it ends"));
    EXPECT_EQ(enter({}, "soon"), "00:05.000 | 00:08.250");
    EXPECT_THAT(refusal->text().toStdString(), HasSubstr("\"soon\""));
    EXPECT_TRUE(refusal->isVisible());
    EXPECT_EQ(enter({}, "8.25"), "00:08.250 | 00:08.250");
    EXPECT_FALSE(refusal->isVisible());
    for (int i = 0; i < 3; ++i) command("Undo")->trigger();
    EXPECT_EQ(line(1).substr(4, 21), "00:04.500 | 00:08.000");

    turnToTitle();
    key(Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(window.textWidget(), " So.");
    EXPECT_THAT(line(1), HasSubstr("leaves. So."));
    command("New Title")->trigger();
    QTest::keyClicks(window.textWidget(), "new");
    EXPECT_EQ(line(2), "3 | 00:08.000 | 00:08.500 | new | ") << "in the gap before the next one";
    command("Delete Title")->trigger();
    EXPECT_EQ(list->topLevelItemCount(), 8);
    EXPECT_EQ(list->currentItem()->text(0), "3");
}

TEST_F(Composer, takesBackStepByStepWhereverTheyWereMade) {
    const auto texts = [&] {
        std::string all;
        for (size_t i = 0; i < 3; ++i) all += document->titles()[i].text->string()->utf8().substr(0, 5) + "|";
        return all;
    };
    // The edits, their titles, and the former state; going to another title is not a step.
    std::vector<std::pair<std::string, size_t>> before;
    const auto act = [&](size_t title, const std::function<void()>& action) {
        if (document->current() != title) document->show(title);
        key(Qt::Key_Home, Qt::ControlModifier);
        before.emplace_back(texts(), title);
        action();
        QApplication::processEvents();
        document->undoManager()->endEvent();
    };
    act(0, [&] { QTest::keyClicks(window.textWidget(), "1st "); });
    act(1, [&] { QTest::keyClicks(window.textWidget(), "2nd "); });
    act(1, [&] { command("New Title")->trigger(); });
    act(2, [&] { QTest::keyClicks(window.textWidget(), "3rd "); });
    act(3, [&] { key(Qt::Key_Delete); });
    act(3, [&] { document->toggleFrameAnno(keyOf("Role")); });
    act(2, [&] { command("Delete Title")->trigger(); });
    before.emplace_back("1st A|2nd A|TORM |", 2);
    ASSERT_EQ(texts(), before.back().first);
    for (size_t i = before.size() - 1; i-- > 0;) {
        ASSERT_TRUE(document->undoManager()->undo());
        EXPECT_EQ(texts(), before[i].first) << i;
        EXPECT_EQ(document->current(), before[i].second) << "the step's own title shows: " << i;
    }
    EXPECT_FALSE(window.isWindowModified());
    for (size_t i = 1; i < before.size(); ++i) {
        ASSERT_TRUE(document->undoManager()->redo());
        EXPECT_EQ(texts(), before[i].first) << i;
    }
}

TEST_F(Composer, showsSafeAreasWhereTheyAreByTheStandard) {
    const QImage picture = exported();
    window.textWidget()->clearFocus();
    const QImage without = window.textWidget()->grab().toImage();
    command("Safe Areas")->trigger();
    const QImage with = window.textWidget()->grab().toImage();
    // Distances of the frames from the picture's left edge, in parts of its width; the inner frame is dashed.
    std::set<double> places;
    for (int x = 0; x < with.width() / 4; ++x) {
        for (int y = with.height() / 2; y < with.height() / 2 + 20; ++y)
            if (with.pixel(x, y) != without.pixel(x, y) && qGray(with.pixel(x, y)) >= 200)
                places.insert(double(x) / with.width());
    }
    EXPECT_THAT(places, testing::Contains(testing::DoubleNear(0.035, 0.003)));
    EXPECT_THAT(places, testing::Contains(testing::DoubleNear(0.05, 0.003)));
    EXPECT_EQ(exported(), picture) << "guides are no part of the picture";
}

TEST_F(Composer, asksBeforeAnythingIsLost) {
    EXPECT_FALSE(window.isWindowModified()) << "freshly opened";
    QTest::keyClicks(window.textWidget(), "!");
    EXPECT_TRUE(window.isWindowModified());
    EXPECT_THAT(answering("Cancel", [&] { EXPECT_FALSE(window.close()); }), HasSubstr("titles"));
    EXPECT_TRUE(window.isVisible());
    answering("Cancel", [&] { EXPECT_FALSE(window.openTitles(QZANNO_EXAMPLES "/scripts.vtt")); });
    EXPECT_EQ(document->titles().size(), 8u);
    const std::string archive = folder.file("mine.annostring"), captions = folder.file("mine.vtt");
    EXPECT_THAT(answering("Cancel", [&] { EXPECT_FALSE(window.saveTitles(archive)); }), HasSubstr("the times"));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(archive)));
    EXPECT_TRUE(window.isWindowModified());
    answering("Save All the Same", [&] { EXPECT_TRUE(window.saveTitles(archive)); });
    EXPECT_FALSE(window.isWindowModified());
    EXPECT_THAT(window.windowTitle().toStdString(), HasSubstr("mine.annostring"));
    command("Save Titles")->trigger();
    EXPECT_FALSE(QApplication::activeModalWidget()) << "what was agreed to is not asked again";

    ASSERT_TRUE(window.saveTitles(captions)) << "nothing is lost";
    document->show(4);
    turnToTitle();
    QTest::keyClicks(window.textWidget(), "!");
    document->toggleFrameAnno(document->palette()->createAnno("Dr. No\t"_ns)->annokey());
    EXPECT_THAT(answering("Save All the Same", [&] { command("Save Titles")->trigger(); }),
                HasSubstr("title 5: the annotation \"Dr. No \" is left out"));
    test::giveAttributes(*document->palette(), document->palette()->lookupAnno(keyOf("Role")),
                         {{QzFontSizeAttribute, test::number(90)}});
    EXPECT_TRUE(window.isWindowModified());
    manager->editor()->setAnno(document->palette()->lookupAnno(keyOf("Role")));
    manager->editor()->setValue("Part"_ns, "annoname");
    EXPECT_THAT(answering("Cancel", [&] { EXPECT_FALSE(window.close()); }), HasSubstr("not applied"));
    manager->editor()->close();
    EXPECT_THAT(answering("Discard", [&] { EXPECT_TRUE(window.close()); }), HasSubstr("palette"));
    const std::string saved(readFile(captions, nullptr)->view());
    EXPECT_THAT(saved, HasSubstr("NOTE Rendered by"));
    EXPECT_THAT(saved, HasSubstr("5\n00:00:16.500 --> 00:00:20.000\n"));
    EXPECT_THAT(saved, HasSubstr("<lang he>")) << "of a title that was edited";
    EXPECT_THAT(saved, HasSubstr("<lang hi>")) << "of one that was left alone";
}

TEST_F(Composer, savesWhatStandsAroundTitles) {
    const std::string path = folder.file("c.vtt"), times = "00:00:01.000 --> 00:00:02.000\n";
    writeText(path, "WEBVTT - mine\n\nNOTE 1\n\n" + times + "a\n\nNOTE 2\n\n" + times + "b\n\nNOTE 3\n\n" + times +
                        "c\n\nNOTE 4\n");
    ASSERT_TRUE(window.openTitles(path));
    command("Delete Title")->trigger();
    command("Next Title")->trigger();
    command("Delete Title")->trigger();
    ASSERT_TRUE(window.saveTitles(path));
    EXPECT_EQ(readFile(path, nullptr)->view(),
              "WEBVTT - mine\n\nNOTE 1\n\nNOTE 2\n\n" + times + "b\n\nNOTE 3\n\nNOTE 4\n");
    writeText(folder.file("t.txt"), "text");
    ASSERT_TRUE(window.openTitles(folder.file("t.txt")));
    ASSERT_TRUE(window.saveTitles(path));
    EXPECT_EQ(document->titles()[0].end, 1.5) << "the list shows the times that the file has given";
    EXPECT_FALSE(window.isWindowModified());
}

TEST_F(Composer, recoversWhatCrashesLeftAndNothingElse) {
    const QString place = QString::fromStdString(folder.file("recovery"));
    const auto files = [&] { return QDir(place).entryList({"*.recovery"}, QDir::Files); };
    window.keepRecovery(place);
    EXPECT_TRUE(files().isEmpty()) << "nothing edited, nothing kept";
    key(Qt::Key_End, Qt::ControlModifier);
    QTest::keyClicks(window.textWidget(), " kept");
    document->palette()->removeAnno(keyOf("Role"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return files().size() == 1; }));
    EXPECT_TRUE(Recovery::leftBehind(place).isEmpty()) << "its process lives";
    // A process that ends without cleaning up leaves its file and lock.
    const auto crash = [&] {
        const pid_t crashing = fork();
        if (crashing == 0) {
            Recovery theirs(place);
            std::string ignored;
            _exit(theirs.write(*document, ignored) && theirs.finish(ignored) ? 0 : 1);
        }
        int status = -1;
        waitpid(crashing, &status, 0);
        return status;
    };
    ASSERT_EQ(crash(), 0);
    document->show(2);
    ASSERT_EQ(crash(), 0);
    writeText((place + "/1-0.recovery").toStdString(), "damaged");
    ASSERT_EQ(Recovery::leftBehind(place).size(), 3);

    const auto other = TitleDocument::documentWithPalette(QzAnnoPalette::init(), {1920, 1080});
    {
        ComposerWindow next(other);
        next.show();
        std::vector<std::string> lines;
        const auto choose = [&lines](const char* text) {
            return [&lines, text](QDialog& dialog) {
                auto* list = dialog.findChild<QListWidget*>();
                lines.clear();
                for (int row = 0; row < list->count(); ++row) lines.push_back(list->item(row)->text().toStdString());
                for (QListWidgetItem* item : list->findItems(text, Qt::MatchContains)) list->setCurrentItem(item);
            };
        };
        answering(
            "Later", [&] { next.keepRecovery(place); }, choose("STORM"));
        EXPECT_THAT(lines, testing::UnorderedElementsAre(HasSubstr("8 titles: Ada Lovelace"),
                                                         HasSubstr("8 titles: STORM"), HasSubstr("is not a readable")));
        EXPECT_EQ(files().size(), 4) << "only what the user discards goes";
        answering(
            "Recover", [&] { next.offerRecovery(); }, choose("program kept"));
        EXPECT_EQ(files().size(), 4) << "what was recovered is kept again until it is saved";
        ASSERT_EQ(other->titles().size(), 8u);
        EXPECT_THAT(other->title()->string()->utf8(), HasSubstr("program kept"));
        const auto keys = other->title()->annotationsAtIndex(20)->objects<QzAnnoKey>();
        EXPECT_TRUE(std::ranges::any_of(keys, [](const auto& each) { return each->name()->utf8() == "Role"; }))
            << "a name that the palette lacks is kept too";
        EXPECT_TRUE(other->title()->annotation(other->palette()->findAnnoKey("Lower Third"_ns), 20));
        EXPECT_THAT(next.windowTitle().toStdString(), HasSubstr("first-title.vtt[*] – broadcast.plist"));
        EXPECT_EQ(other->titles()[1].start, 4.5);
        EXPECT_THAT(other->titles()[0].source->preamble, HasSubstr("NOTE"));
        EXPECT_TRUE(next.isWindowModified()) << "it is in no file of the user's";
        // Only the discarded one disappears; the rest stay listed.
        QTimer::singleShot(300, &next, [] { qobject_cast<QDialog*>(QApplication::activeModalWidget())->reject(); });
        answering(
            "Discard", [&] { next.offerRecovery(); }, choose("is not a readable"));
        EXPECT_EQ(Recovery::leftBehind(place).size(), 1);
        std::string error;
        writeText((place + "/2-0.recovery").toStdString(), "damaged");
        EXPECT_FALSE(Recovery::restore(place + "/2-0.recovery", *other, error));
        EXPECT_THAT(error, HasSubstr("2-0.recovery: "));
        EXPECT_EQ(other->titles().size(), 8u) << "the document stays as it was";
    }
    ASSERT_TRUE(window.saveTitles(folder.file("saved.vtt")));
    ASSERT_TRUE(window.savePalette(folder.file("saved.plist")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return files().size() == 2; }));
    EXPECT_LE(QDir(place).entryList({"*.lock"}, QDir::Files).size(), 1) << "locks of dead processes are removed too";
}

TEST_F(Composer, writesRawPicturesAsTheyAreComposited) {
    ASSERT_TRUE(window.savePicture(folder.file("shot.rgba")));
    const Ref<NSData> raw = readFile(folder.file("shot.rgba"), nullptr);
    ASSERT_TRUE(raw && raw->view().size() == 1920u * 1080 * 4);
    const QImage picture = exported().convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    size_t inked = 0, apart = 0;
    for (size_t i = 0; i < raw->view().size(); ++i) {
        const int here = raw->bytes()[i];
        inked += here > 0;
        apart += std::abs(picture.constBits()[i] - here) > 1;
    }
    EXPECT_GT(inked, 10000u);
    EXPECT_EQ(apart, 0u) << "the PNG holds the same, straight";
}

TEST_F(Composer, keepsTheFilesOpenedLast) {
    for (int i = 0; i < RecentFiles::kPathsMax + 2; ++i) RecentFiles::note("/f/" + std::to_string(i) + ".vtt");
    RecentFiles::note("/f/5 & ü.vtt");
    RecentFiles::note("/f/8.vtt");
    EXPECT_EQ(RecentFiles::paths().join(' ').toStdString(),
              "/f/8.vtt /f/5 & ü.vtt /f/9.vtt /f/7.vtt /f/6.vtt /f/5.vtt /f/4.vtt /f/3.vtt");
    ASSERT_TRUE(window.openTitles(QZANNO_EXAMPLES "/scripts.vtt"));
    RecentFiles::note(QZANNO_EXAMPLES "/first-title.vtt");
    auto* menu = window.findChild<RecentFiles*>();
    emit menu->aboutToShow();
    EXPECT_EQ(menu->actions()[1]->text().toStdString(), "&2  scripts.vtt");
    menu->actions()[0]->trigger();
    EXPECT_EQ(document->titles().size(), 8u);
}

TEST_F(Composer, isReachedByTabsAndReadAloud) {
    // Tab visits every focusable control and returns to the first.
    const auto walk = [](QWidget& top) {
        top.activateWindow();
        QApplication::processEvents();
        std::vector<QWidget*> reached;
        if (!top.focusWidget()) top.findChildren<QWidget*>().front()->setFocus();
        for (int step = 0; step < 200; ++step) {
            QWidget* focus = QApplication::focusWidget();
            if (!focus || std::ranges::find(reached, focus) != reached.end()) break;
            reached.push_back(focus);
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        return reached;
    };
    int count = 0;
    const auto check = [&](QWidget& top, const std::string& page) {
        const std::vector<QWidget*> reached = walk(top);
        for (QWidget* widget : top.findChildren<QWidget*>()) {
            // The toolkit's internal parts of controls have no names.
            const bool isControl = !widget->objectName().isEmpty() && !widget->objectName().startsWith("qt_") &&
                                   !qobject_cast<QLabel*>(widget) &&
                                   (qobject_cast<QAbstractButton*>(widget) || !widget->property("binding").isNull());
            if (!isControl && !(widget->focusPolicy() & Qt::TabFocus)) continue;
            if (!widget->isVisible() || !widget->isEnabled() || widget->focusProxy()) continue;
            ++count;
            const std::string name =
                page + ": " + widget->metaObject()->className() + " " + widget->objectName().toStdString();
            EXPECT_TRUE(std::ranges::find(reached, widget) != reached.end()) << name;
            QAccessibleInterface* read = QAccessible::queryAccessibleInterface(widget);
            EXPECT_FALSE(!read || read->text(QAccessible::Name).isEmpty()) << name;
        }
    };
    check(window, "window");
    table()->selectRow(1);
    manager->window()->makeKeyAndOrderFront({});
    check(*manager->window()->widget(), "panel");
    // With every attribute set, no field of the editor is disabled.
    manager->editor()->setAnno(document->palette()->lookupAnno(keyOf("Role")));
    QWidget& editor = *manager->editor()->window()->widget();
    for (auto* flag : editor.findChildren<QCheckBox*>()) flag->setChecked(true);
    for (auto* box : editor.findChildren<QGroupBox*>()) box->setChecked(true);
    auto* pages = editor.findChild<QStackedWidget*>("tabview");
    for (int page = 0; page < pages->count(); ++page) {
        editor.findChild<QTableView*>("pages")->selectRow(page);
        check(editor, "page " + std::to_string(page));
    }
    EXPECT_GT(count, 40);
}

}  // namespace
}  // namespace qz::composer
