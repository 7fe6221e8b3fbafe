#pragma once

#include <map>
#include <string>
#include <vector>

#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/ui/NSFontManager.h"
#include "QzAnno/platform/ui/NSKeyValueObserving.h"
#include "QzAnno/platform/ui/NSPopUpButton.h"
#include "QzAnno/platform/ui/NSTabView.h"
#include "QzAnno/platform/ui/NSTableView.h"
#include "QzAnno/platform/ui/NSWindow.h"

class QLineEdit;

namespace qz {

class QzAnnoPaletteAsTable;

/// Edits one annotation in a panel: copies its attributes to fields, each group with a flag for whether the annotation
/// sets the attribute at all, and writes them back to the palette on request.
///
/// The fields are observable properties, named as `updateAllKeys` lists them; numbers of reals, whole numbers for
/// codes, strings and colours. "marginsl" and its like edit the bounding box; they are in units of the screen whose
/// size the action "requestScreenSize:" brings, or per cent when nobody answers it. `addedKeys` are fields beyond
/// those: margins in points of any screen, and the traits of letters. "isEditing" is observable too, and "placeNote", a
/// line that says what places the title when it is not what the fields seem to say.
class QzAnnoEditor final : public NSResponder,
                           public NSKeyValueObserving,
                           public NSTableViewDataSource,
                           public NSTableViewDelegate,
                           public NSWindowDelegate,
                           public NSFontPanelValidation {
public:
    /// Objects connected by the interface file.
    struct Outlets {
        Ref<NSTabView> tabview;                     ///< the fields, page by page
        WeakRef<QzAnnoPaletteAsTable> paletteHost;  ///< shows the palette being edited; may be null
        Ref<NSWindow> annowindow;                   ///< the panel
        Ref<NSPopUpButton> hpopup;                  ///< the horizontal alignment
        Ref<NSPopUpButton> vpopup;                  ///< the vertical alignment
        /// The name's field, which has the focus when a new annotation is edited; lives as long as the panel.
        QLineEdit* annoname = nullptr;
        /// Lists the pages, with this editor as data source.
        Ref<NSTableView> pages;
    };

    /// Edits nothing and has no outlets.
    static Ref<QzAnnoEditor> init();
    ~QzAnnoEditor() override;

    /// Becomes the delegate of the panel and of the list of pages.
    void connectOutlets(const Outlets& outlets);
    /// Fills the alignment menus and prepares the font panel. Needs the outlets.
    void awakeFromNib();

    /// In points. A size without area counts as 100 x 100.
    void setScreenSize(NSSize size) { screensize_ = size; }
    /// Starts editing a copy of the annotation; ignored while another is being edited. Null only closes the panel.
    void setAnno(const Ref<const QzAnno>& anno);
    /// True from `setAnno` until the panel closes. Meanwhile the panel's title names the annotation.
    bool isEditing() const { return editing_; }
    /// Whether the user has changed a field since the fields were last filled or applied.
    bool hasChanges() const { return editing_ && hasChanges_; }
    /// Shows the page with that label; returns false if there is none.
    bool showPage(const Ref<NSString>& label);
    /// The labels of the pages, from the top.
    std::vector<Ref<NSString>> pageLabels() const;
    /// The panel; null until it is connected.
    const Ref<NSWindow>& window() const { return outlets_.annowindow; }

    // Actions.
    /// Writes the fields to the palette; may be called any number of times.
    void apply(const Ref<NSObject>& sender);
    /// Resets the fields to the annotation as it was when editing began.
    void revert(const Ref<NSObject>& sender);
    /// Writes the fields to the palette and closes the panel.
    void okay(const Ref<NSObject>& sender);
    /// Restores the annotation in the palette as it was when editing began, including its name.
    void cancel(const Ref<NSObject>& sender);
    /// Opens the font panel with the field's font.
    void editFont(const Ref<NSObject>& sender);
    /// Takes the font, but not the size, chosen in the sender, the font manager.
    void changeFont(const Ref<NSObject>& sender);
    /// Every action is valid at any time.
    bool validateUserInterfaceItem(const NSObject& /*item*/) const { return true; }

    /// Ends editing without writing back.
    void close();

    /// The names of all fields, flags first, in the order in which changes are announced.
    static const std::vector<std::string>& updateAllKeys();
    /// The names of the fields added since, flags first; announced after the others.
    static const std::vector<std::string>& addedKeys();
    /// The annotation with the attributes described by the fields; null if nothing is being edited.
    Ref<QzAnno> copyToAnno() const;
    Ref<NSObject> valueForUndefinedKey(const std::string& key) const override;

    int32_t numberOfRowsInTableView(NSTableView& tableView) override;
    Ref<NSObject> objectValueForTableColumn(NSTableView& tableView, NSTableColumn& column, int32_t row) override;
    bool shouldEditTableColumn(NSTableView& /*tableView*/, NSTableColumn& /*column*/, int32_t /*row*/) override {
        return false;
    }
    void tableViewSelectionDidChange(const NSNotification& notification) override;
    void windowWillClose(const NSNotification& notification) override;
    bool cancelOperation(NSWindow& window) override;
    Ref<NSUndoManager> windowWillReturnUndoManager(NSWindow& window) override;
    uint32_t validModesForFontPanel(NSWindow& fontPanel) override;

    std::string className() const override { return "QzAnnoEditor"; }

private:
    QzAnnoEditor();

    void copyFromAnno();
    void applyAnno(const Ref<QzAnno>& anno);
    void requestScreenSize();
    void setFieldsToDefaults();
    Ref<NSString> placeNote() const;
    void prepareFontPanel();
    void showPage(int32_t page);
    void showName();

    bool isOn(const std::string& flag) const;
    void set(const std::string& field, const Ref<NSObject>& value);
    void setByUser(const std::string& field, const Ref<NSObject>& value);
    Ref<QzAnnoPalette> palette() const;

    Outlets outlets_;
    bool editing_ = false;
    bool hasChanges_ = false;
    Ref<QzAnno> originalAnno_;
    Ref<NSString> origannoname_;
    // Every field and flag by name.
    std::map<std::string, Ref<NSObject>> fields_;
    NSSize screensize_ = {100, 100};
    Ref<NSWindow> fontpanel_;
    WeakRef<NSTableView> tv_;
};

}  // namespace qz
