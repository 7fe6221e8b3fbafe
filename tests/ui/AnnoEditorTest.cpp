#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QStackedWidget>

#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "platform/ui/ColorWell.h"
#include "platform/ui/NSBox.h"
#include "platform/ui/NSColorPanel.h"
#include "tests/ui/Desk.h"

namespace qz {
namespace {

using test::number;
using testing::ElementsAre;

/// Answers "requestScreenSize:" as a host of a 1920 x 1080 screen.
class ScreenHost : public NSResponder {
public:
    ScreenHost() {
        setHandler("requestScreenSize:", [](const Ref<NSObject>& sender) {
            std::dynamic_pointer_cast<QzAnnoEditor>(sender)->setScreenSize({1920, 1080});
        });
    }
};

class AnnoEditor : public test::Desk {
protected:
    QzAnnoEditor& editor() { return *manager->editor(); }
    std::string field(const char* name) { return editor().valueForKey(name)->description(); }
    static std::vector<std::string> allFields() {
        std::vector<std::string> fields = QzAnnoEditor::updateAllKeys();
        fields.insert(fields.end(), QzAnnoEditor::addedKeys().begin(), QzAnnoEditor::addedKeys().end());
        return fields;
    }
    bool flag(const char* name) { return std::static_pointer_cast<NSNumber>(editor().valueForKey(name))->boolValue(); }
    template <class T>
    T* control(const char* name) {
        return dynamic_cast<T*>(editorControl(name));
    }
    void click(const char* button) { control<QAbstractButton>(button)->click(); }
    Ref<const QzAnno> anno(size_t index) { return palette->lookupAnno(keys[index]); }
    void give(size_t index, const test::Attributes& attributes) {
        test::giveAttributes(*palette, anno(index), attributes);
    }
};

TEST_F(AnnoEditor, fillsAnEmptyAnnotationWithDefaultsAndWritesNothing) {
    editor().setAnno(anno(0));
    for (const std::string& name : allFields())
        EXPECT_TRUE(!name.starts_with("en_") || flag(name.c_str()) == (name == "en_annoname")) << name;
    std::string fixed;
    for (const std::string& name : QzAnnoEditor::updateAllKeys()) fixed += name + " ";
    EXPECT_EQ(fixed,
              "en_annoname en_font en_fontsize en_fgcolor en_shadowwidth en_shadowoffset en_shadowcolor "
              "en_shadowwidth2 en_shadowoffset2 en_shadowcolor2 en_margins en_halign en_kern en_slant en_baseshift "
              "en_leading en_valign en_tbox font fontsize fgcolor shadowwidth shadowoffset_x shadowoffset_y "
              "shadowcolor shadowwidth2 shadowoffset_x2 shadowoffset_y2 shadowcolor2 tboxtype tboxcolor marginsl "
              "marginsr marginst marginsb halign kern slant baseshift leading valign annoname ");
    EXPECT_EQ(field("annoname"), "A");
    EXPECT_EQ(field("fontsize"), "24");
    EXPECT_EQ(field("font"), NSFont::systemFontOfSize(24)->fontName()->utf8());
    click("applyButton");
    EXPECT_EQ(anno(0)->allAttributes()->count(), 0u);
}

TEST_F(AnnoEditor, writesBackWhatItRead) {
    const test::Attributes attributes = {
        {QzFontAttribute, "DejaVuSans-Bold"_ns},
        {QzFontSizeAttribute, number(31.5)},
        {QzTextColorAttribute, test::rgba(1, 0.5f, 0)},
        {QzBackgroundWidthAttribute, number(4)},
        {QzBackgroundOffsetAttribute, "{2, 3.5}"_ns},
        {QzBackgroundColorAttribute, test::rgba(0, 0, 0, 0.5f)},
        {QzBackground2WidthAttribute, number(8)},
        {QzBackground2OffsetAttribute, "{-1, 0}"_ns},
        {QzBackground2ColorAttribute, test::rgba(1, 1, 1)},
        {QzHorizontalAlignmentAttribute, test::integer(2)},
        {QzVerticalAlignmentAttribute, test::integer(1)},
        {NSKernAttributeName, number(1.5)},
        {NSObliquenessAttributeName, number(0.25)},
        {NSBaselineOffsetAttributeName, number(-3)},
        {QzLeadingAttribute, number(6)},
        {QzBoundingBoxAttribute, "{{0.25, 0.25}, {0.5, 0.5}}"_ns},
        {QzBoundingMarginsAttribute, test::margins(160, 20.5, -3, 0)},
        {QzBoldAttribute, test::integer(0)},
        {QzItalicAttribute, test::integer(1)},
        {QzUnderlineAttribute, test::integer(1)},
        {QzStrikeThroughAttribute, test::integer(0)},
        {"Of a host"_ns, "kept"_ns},
    };
    give(0, attributes);
    give(0, {{QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::qzbbWithColor(test::rgba(0, 1, 0), 2)}});
    editor().setAnno(anno(0));
    for (const std::string& name : allFields()) EXPECT_TRUE(!name.starts_with("en_") || flag(name.c_str())) << name;
    click("okayButton");
    EXPECT_FALSE(editor().isEditing());
    EXPECT_EQ(anno(0)->allAttributes()->count(), attributes.size() + 1);
    for (const auto& [name, value] : attributes) {
        EXPECT_TRUE(areEqual(anno(0)->attribute(*name), value)) << name->utf8();
    }
    const auto box = std::dynamic_pointer_cast<QzBBoxInfo>(anno(0)->attribute(*QzTextBoundingBoxAppearanceAttribute));
    EXPECT_EQ(box->type(), 2);
    EXPECT_TRUE(box->color()->isEqual(*test::rgba(0, 1, 0)));
}

TEST_F(AnnoEditor, convertsMarginsToTheHostsScreen) {
    give(0, {{QzBoundingBoxAttribute, "{{0.1, 0.2}, {0.8, 0.6}}"_ns}});
    const auto marginsShown = [&] {
        std::vector<double> margins;
        for (const char* name : {"marginsl", "marginsr", "marginst", "marginsb"})
            margins.push_back(std::round(control<QDoubleSpinBox>(name)->value() * 100) / 100);
        return margins;
    };
    // Left, top, width and height, in thousandths of the screen.
    const auto applied = [&] {
        click("applyButton");
        const auto [at, size] =
            NSRectFromString(*std::static_pointer_cast<NSString>(anno(0)->attribute(*QzBoundingBoxAttribute)));
        return std::vector{std::lround(at.x * 1000), std::lround(at.y * 1000), std::lround(size.width * 1000),
                           std::lround(size.height * 1000)};
    };
    editor().setAnno(anno(0));
    EXPECT_THAT(marginsShown(), ElementsAre(10, 10, 20, 20)) << "per cent when nobody knows a screen";
    editor().close();
    const auto host = std::make_shared<ScreenHost>();
    NSApplication::sharedApplication().setDelegate(host);
    editor().setAnno(anno(0));
    EXPECT_THAT(marginsShown(), ElementsAre(192, 192, 216, 216));
    EXPECT_THAT(applied(), ElementsAre(100, 200, 800, 600));
    control<QDoubleSpinBox>("marginsl")->setValue(480);
    control<QDoubleSpinBox>("marginsb")->setValue(0);
    EXPECT_THAT(applied(), ElementsAre(250, 200, 650, 800));
}

TEST_F(AnnoEditor, editsMarginsAndSaysWhatPlacesTheTitle) {
    const auto margins = [&] { return anno(0)->attribute(*QzBoundingMarginsAttribute); };
    const auto note = [&] { return control<QLabel>("placeNote")->text().toStdString(); };
    const auto ofIntegers =
        NSArray::arrayWithObjects({test::integer(10), test::integer(20), test::integer(30), test::integer(40)});
    give(0, {{QzBoundingMarginsAttribute, ofIntegers}});
    give(1, {{QzBoundingBoxAttribute, "{{0, 0}, {1, 1}}"_ns}});
    editor().setAnno(anno(0));
    click("applyButton");
    EXPECT_EQ(margins(), ofIntegers) << "left alone, they stay as they are";
    control<QDoubleSpinBox>("boundingmarginst")->setValue(12.5);
    EXPECT_EQ(note(), "");
    editor().setValue(NSNumber::numberWithBool(true), "en_margins");
    EXPECT_THAT(note(), testing::HasSubstr("margins place the title"));
    click("applyButton");
    EXPECT_TRUE(areEqual(margins(), test::margins(10, 20, 12.5, 40)));
    editor().setValue(NSNumber::numberWithBool(false), "en_boundingmargins");
    EXPECT_EQ(note(), "");
    editor().cancel({});
    EXPECT_EQ(margins(), ofIntegers);
    editor().setAnno(anno(1));
    EXPECT_THAT(note(), testing::HasSubstr("\"A\"")) << "margins of another annotation win over the box of this one";
}

TEST_F(AnnoEditor, isUsedByKeysAsADialogIs) {
    const auto newIsOn = [&] { return tableWidget()->window()->findChild<QWidget*>("newButton")->isEnabled(); };
    manager->showWindow({});
    table().newAnno({});
    EXPECT_FALSE(newIsOn());
    auto* name = control<QLineEdit>("annoname");
    EXPECT_EQ(editorWindow()->focusWidget(), name);
    QTest::keyClicks(name, "Headline");
    QTest::keyClick(name, Qt::Key_Return);
    EXPECT_FALSE(editor().isEditing()) << "Return clicks OK";
    EXPECT_EQ(order(), "Headline D C B A Default ");
    for (const char* focus : {"pages", "fontsize"}) {
        editor().setAnno(anno(0));
        EXPECT_EQ(editorWindow()->windowTitle().toStdString(), "A – Annotation");
        editor().setValue(NSNumber::numberWithBool(true), "en_fontsize");
        click("applyButton");
        QTest::keyClick(control<QWidget>(focus), Qt::Key_Escape);
        EXPECT_FALSE(editor().isEditing()) << "Escape cancels";
        EXPECT_FALSE(anno(0)->attribute(*QzFontSizeAttribute));
    }
    EXPECT_TRUE(newIsOn());
    editor().setAnno(anno(0));
    editor().setValue("B"_ns, "annoname");
    control<QWidget>("cancelButton")->setFocus();
    QTest::keyClick(control<QWidget>("cancelButton"), Qt::Key_Return);
    EXPECT_EQ(keys[0]->name()->utf8(), "A") << "Return clicks the button that has the keys";
    for (const auto& [type, shown] : {std::pair(0, "None"), {1, "Outline"}, {2, "Filled"}, {7, "7"}}) {
        give(0, {{QzTextBoundingBoxAppearanceAttribute, QzBBoxInfo::qzbbWithColor(test::rgba(0, 1, 0), type)}});
        editor().setAnno(anno(0));
        EXPECT_EQ(control<QComboBox>("tboxtype")->currentText(), shown);
        QTest::keyClick(control<QWidget>("tboxtype"), Qt::Key_Home);
        EXPECT_EQ(field("tboxtype"), "0");
        editor().close();
    }
}

TEST_F(AnnoEditor, aClearedFlagRemovesTheAttribute) {
    give(0, {{QzFontSizeAttribute, number(30)}, {QzBoundingBoxAttribute, "{{0, 0}, {1, 1}}"_ns}});
    editor().setAnno(anno(0));
    EXPECT_TRUE(control<QWidget>("fontsize")->isEnabled());
    control<QCheckBox>("en_fontsize")->click();
    EXPECT_FALSE(control<QWidget>("fontsize")->isEnabled());
    EXPECT_TRUE(control<QGroupBox>("marginsBox")->isChecked());
    // A check box in the title of a box; offscreen it is clicked at its place.
    control<QStackedWidget>("tabview")->setCurrentIndex(3);
    QApplication::processEvents();
    QTest::mouseClick(control<QGroupBox>("marginsBox"), Qt::LeftButton, {}, QPoint(12, 8));
    EXPECT_FALSE(flag("en_margins"));
    click("applyButton");
    EXPECT_EQ(anno(0)->allAttributes()->count(), 0u);
    palette->undoManager()->endEvent();
    palette->undoManager()->undo();
    EXPECT_EQ(anno(0)->allAttributes()->count(), 2u);
}

TEST_F(AnnoEditor, cancelTakesBackEverythingThatWasApplied) {
    give(0, {{QzFontSizeAttribute, number(30)}});
    editor().setAnno(anno(0));
    auto* name = control<QLineEdit>("annoname");
    name->selectAll();
    QTest::keyClicks(name, "Headline");
    control<QDoubleSpinBox>("fontsize")->setValue(50);
    click("applyButton");
    EXPECT_EQ(keys[0]->name()->utf8(), "Headline");
    EXPECT_EQ(order(), "D C B Headline Default ");
    QTest::keyClicks(name, " 2");
    control<QCheckBox>("en_fontsize")->click();
    click("applyButton");
    EXPECT_FALSE(anno(0)->attribute(*QzFontSizeAttribute));
    editor().revert({});
    EXPECT_EQ(field("annoname"), "A");
    EXPECT_EQ(keys[0]->name()->utf8(), "Headline 2") << "reverting only fills the fields";
    click("cancelButton");
    EXPECT_EQ(keys[0]->name()->utf8(), "A");
    EXPECT_TRUE(areEqual(anno(0)->attribute(*QzFontSizeAttribute), number(30)));
    EXPECT_FALSE(editor().isEditing());
    EXPECT_FALSE(editorWindow()->isVisible());
}

TEST_F(AnnoEditor, renamesInAStepOfUndoAndOnlyWhatMayBeRenamed) {
    editor().setAnno(anno(0));
    palette->undoManager()->endEvent();
    editor().setValue("Headline"_ns, "annoname");
    click("okayButton");
    EXPECT_EQ(order(), "D C B Headline Default ");
    palette->undoManager()->undo();
    EXPECT_EQ(order(), "D C B A Default ");
    editor().setAnno(palette->lookupAnno({}));
    EXPECT_EQ(field("annoname"), "Default");
    EXPECT_FALSE(flag("en_annoname"));
    click("applyButton");
    click("cancelButton");
    EXPECT_EQ(palette->lookupAnno({})->name()->utf8(), "GLOBALS");
    const auto locked = QzAnnoPalette::init();
    manager->setAnnotationPalette(locked);
    editor().setAnno(anno(0));
    editor().setValue("X"_ns, "annoname");
    click("okayButton");
    EXPECT_EQ(keys[0]->name()->utf8(), "A") << "a locked palette is left alone";
}

TEST_F(AnnoEditor, keepsToTheAnnotationUnderEdit) {
    editor().setAnno(anno(0));
    EXPECT_EQ(control<QStackedWidget>("tabview")->currentIndex(), 1);
    editor().setAnno(anno(1));
    EXPECT_EQ(field("annoname"), "A");
    // Closing the window ends the edit and writes nothing.
    editor().setValue("Z"_ns, "annoname");
    editorWindow()->close();
    EXPECT_FALSE(editor().isEditing());
    EXPECT_EQ(keys[0]->name()->utf8(), "A");
    table().newAnno({});
    EXPECT_EQ(control<QStackedWidget>("tabview")->currentIndex(), 0) << "the page of a new annotation";
    EXPECT_TRUE(NSColorPanel::sharedColorPanel().showsAlpha());
    auto* pages = control<QTableView>("pages");
    pages->selectRow(2);
    EXPECT_EQ(control<QStackedWidget>("tabview")->currentIndex(), 2);
}

TEST_F(AnnoEditor, announcesItsFieldsAndTakesThemFromControls) {
    std::vector<std::string> will, did;
    editor().addObserver(
        this, [&](const std::string& key) { will.push_back(key); },
        [&](const std::string& key) { did.push_back(key); });
    editor().revert({});
    std::vector<std::string> all = allFields();
    all.push_back("placeNote");
    EXPECT_EQ(will, all);
    EXPECT_EQ(did, all);
    editor().removeObserver(this);

    give(0, {{QzHorizontalAlignmentAttribute, test::integer(1)}});
    editor().setAnno(anno(0));
    auto* popup = control<QComboBox>("hpopup");
    EXPECT_EQ(popup->currentText(), "Right");
    popup->setFocus();
    QTest::keyClick(popup, Qt::Key_Down);
    EXPECT_EQ(field("halign"), "2");
    EXPECT_FALSE(editor().valueForKey("no such field"));
    EXPECT_THAT(log.lines(), testing::Contains("QzAnno binding missing for no such field\n"));
}

TEST_F(AnnoEditor, takesFontsOfAnySpellingAndFromTheFontPanel) {
    give(0, {{QzFontNameAttribute, "DejaVuSans"_ns}, {QzFontStyleAttribute, "Bold"_ns}});
    editor().setAnno(anno(0));
    EXPECT_EQ(control<QLineEdit>("font")->text(), "DejaVuSans-Bold");
    click("applyButton");
    EXPECT_EQ(anno(0)->attribute(*QzFontAttribute)->description(), "DejaVuSans-Bold");
    EXPECT_EQ(anno(0)->allAttributes()->count(), 1u);
    auto& fonts = NSFontManager::sharedFontManager();
    fonts.setSelectedFont(NSFont::fontWithName(*"DejaVu Sans Mono"_ns, 24), false);
    editor().changeFont(refTo(fonts));
    fonts.setSelectedFont({}, false);
    editor().changeFont(refTo(fonts));
    EXPECT_EQ(field("font"), "DejaVuSansMono") << "no font changes nothing";
    editor().editFont({});
    const Ref<NSWindow> panel = fonts.fontPanel(false);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_FALSE(panel->widget()->findChild<QDoubleSpinBox*>()->isVisible()) << "the panel does not choose sizes";
    editor().close();
    EXPECT_FALSE(panel->isVisible());
}

}  // namespace
}  // namespace qz
