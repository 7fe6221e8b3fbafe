#include "QzAnno/ui/QzAnnoEditor.h"

#include <QLineEdit>
#include <algorithm>
#include <cmath>

#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/QzAnnoPaletteAsTable.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "QzAnno_AnnotatedTextFramework/palette/TitleStyle.h"
#include "QzAnno_AnnotatedTextFramework/ui/EditorFields.h"
#include "QzAnno_AnnotatedTextFramework/ui/KeyRenaming.h"
#include "platform/ui/NSColorPanel.h"

namespace qz {
namespace {

// Without a screen from the host, margins are percentages.
constexpr NSSize kPerCentScreen = {100, 100};
constexpr float kPanelFontSize = 24.0f;
constexpr int32_t kPageOfNewAnno = 0;
constexpr int32_t kPageOfOtherAnno = 1;
constexpr const char* kPlaceNote = "placeNote";

bool isScreen(NSSize size) {
    return std::isfinite(size.width) && std::isfinite(size.height) && size.width > 0 && size.height > 0;
}

Ref<NSMenu> menuOf(const Ref<NSString>& title, const std::vector<const char*>& items) {
    const Ref<NSMenu> menu = NSMenu::initWithTitle(title);
    for (size_t tag = 0; tag < items.size(); ++tag) {
        menu->addItem(
            NSMenuItem::initWithTitle(NSString::stringWithUTF8String(items[tag]), {}, static_cast<int32_t>(tag)));
    }
    return menu;
}

void forEachField(const std::function<void(const std::string& key)>& visit) {
    for (const std::string& key : QzAnnoEditor::updateAllKeys()) visit(key);
    for (const std::string& key : QzAnnoEditor::addedKeys()) visit(key);
}

/// The name as listed in the panel.
std::string nameShown(const QzAnnoKey& key) {
    return key.isDefault() ? "Default" : key.name()->utf8();
}

/// The full name, or else its equivalent.
Ref<NSObject> fontOf(const QzAnno& anno) {
    const Ref<NSObject> name = anno.attribute(*QzFontAttribute);
    return name ? name : fontNameAskedFor(*anno.allAttributes());
}

}  // namespace

const std::vector<std::string>& QzAnnoEditor::updateAllKeys() {
    return fixedEditorNames();
}

const std::vector<std::string>& QzAnnoEditor::addedKeys() {
    return addedEditorNames();
}

QzAnnoEditor::QzAnnoEditor() {
    forEachField([this](const std::string& key) {
        defineProperty(key, {[this, key] { return fields_[key]; },
                             [this, key](const Ref<NSObject>& value) { setByUser(key, value); }});
    });
    defineProperty(kPlaceNote, {[this] { return placeNote(); }, nullptr});
    defineProperty("isEditing", {[this] { return NSNumber::numberWithBool(editing_); }, nullptr});
    using Action = void (QzAnnoEditor::*)(const Ref<NSObject>&);
    const std::pair<const char*, Action> actions[] = {
        {"apply:", &QzAnnoEditor::apply},       {"revert:", &QzAnnoEditor::revert},
        {"okay:", &QzAnnoEditor::okay},         {"cancel:", &QzAnnoEditor::cancel},
        {"editFont:", &QzAnnoEditor::editFont}, {"changeFont:", &QzAnnoEditor::changeFont}};
    for (const auto& [name, action] : actions) {
        setHandler(name, [this, act = action](const Ref<NSObject>& sender) { (this->*act)(sender); });
    }
}

Ref<QzAnnoEditor> QzAnnoEditor::init() {
    Ref<QzAnnoEditor> editor(new QzAnnoEditor);
    editor->copyFromAnno();
    return editor;
}

QzAnnoEditor::~QzAnnoEditor() {
    if (outlets_.annowindow) outlets_.annowindow->setDelegate(nullptr);
    if (!outlets_.pages) return;
    outlets_.pages->setDelegate(nullptr);
    outlets_.pages->setDataSource(nullptr);
}

void QzAnnoEditor::connectOutlets(const Outlets& outlets) {
    outlets_ = outlets;
    outlets_.annowindow->setDelegate(this);
    outlets_.pages->setDelegate(this);
    outlets_.pages->setDataSource(this);
}

void QzAnnoEditor::awakeFromNib() {
    outlets_.hpopup->setMenu(menuOf("halign"_ns, {"Left", "Right", "Center", "Justified", "Natural"}));
    outlets_.vpopup->setMenu(menuOf("valign"_ns, {"Top", "Center", "Bottom"}));
    NSFontManager::sharedFontManager().setDelegate(std::static_pointer_cast<QzAnnoEditor>(shared_from_this()));
    prepareFontPanel();
}

void QzAnnoEditor::prepareFontPanel() {
    NSFontManager& fonts = NSFontManager::sharedFontManager();
    const auto name = std::static_pointer_cast<NSString>(fields_["font"]);
    fontpanel_ = fonts.fontPanel(true);
    const Ref<QzAnnoPalette> palette = this->palette();
    const NSFont::Library library = palette ? palette->fontLibrary() : nullptr;
    fonts.setSelectedFont(NSFont::fontWithName(*name, kPanelFontSize, library), false);
    fonts.modifyFontViaPanel(shared_from_this());
}

// Fields

void QzAnnoEditor::set(const std::string& field, const Ref<NSObject>& value) {
    fields_[field] = valueForEditorField(field, value);
}

void QzAnnoEditor::setByUser(const std::string& field, const Ref<NSObject>& value) {
    set(field, value);
    hasChanges_ = true;
    if (field != "en_margins" && field != "en_boundingmargins") return;
    willChangeValueForKey(kPlaceNote);
    didChangeValueForKey(kPlaceNote);
}

bool QzAnnoEditor::isOn(const std::string& flag) const {
    return std::static_pointer_cast<NSNumber>(fields_.at(flag))->boolValue();
}

Ref<NSObject> QzAnnoEditor::valueForUndefinedKey(const std::string& key) const {
    NSLog("QzAnno binding missing for %@\n", {key});
    return NSKeyValueObserving::valueForUndefinedKey(key);
}

void QzAnnoEditor::setFieldsToDefaults() {
    forEachField([this](const std::string& key) { fields_[key] = defaultOfEditorField(key); });
}

void QzAnnoEditor::requestScreenSize() {
    const bool isAnswered = NSApplication::sharedApplication().sendAction("requestScreenSize:", {}, shared_from_this());
    if (!isAnswered || !isScreen(screensize_)) screensize_ = kPerCentScreen;
}

void QzAnnoEditor::copyFromAnno() {
    requestScreenSize();
    hasChanges_ = false;
    forEachField([this](const std::string& key) { willChangeValueForKey(key); });
    willChangeValueForKey(kPlaceNote);
    setFieldsToDefaults();
    if (originalAnno_) {
        const QzAnno& anno = *originalAnno_;
        const bool isGlobal = anno.annokey()->isDefault();
        set("annoname", isGlobal ? "Default"_ns : origannoname_);
        set("en_annoname", NSNumber::numberWithBool(!isGlobal));
        for (const EditedAttribute& edited : editedAttributes()) {
            const Attribute& attribute = *edited.attribute;
            const bool isFont = attribute.kind == Attribute::Kind::string;
            const Ref<NSObject> value = isFont ? fontOf(anno) : anno.attribute(*attribute.name);
            if (!value) continue;
            const std::vector<Ref<NSObject>> fields = fieldsFromValue(attribute, value, screensize_);
            for (size_t i = 0; i < fields.size(); ++i) set(edited.fields[i], fields[i]);
            set(edited.flag, NSNumber::numberWithBool(true));
        }
    }
    forEachField([this](const std::string& key) { didChangeValueForKey(key); });
    didChangeValueForKey(kPlaceNote);
}

Ref<NSString> QzAnnoEditor::placeNote() const {
    if (!isOn("en_margins")) return NSString::string();
    if (isOn("en_boundingmargins")) return "Both are set: the margins place the title, not the box."_ns;
    const Ref<QzAnnoPalette> palette = this->palette();
    for (int32_t priority = 0; palette && originalAnno_ && priority <= palette->maxPriority(); ++priority) {
        const Ref<QzAnnoKey> key = palette->annoKeyAtPriority(priority);
        const Ref<const QzAnno> other = palette->lookupAnno(key);
        if (key == originalAnno_->annokey() || !other->attribute(*QzBoundingMarginsAttribute)) continue;
        return NSString::stringWithUTF8String(stringWithFormat(
            "Where a title also has \"%@\", its margins place the title, not this box.", {nameShown(*key)}));
    }
    return NSString::string();
}

Ref<QzAnno> QzAnnoEditor::copyToAnno() const {
    if (!editing_ || !originalAnno_) return {};
    const Ref<QzMutableAnno> anno = originalAnno_->mutableCopy();
    anno->setAttribute(QzFontNameAttribute, nullptr);
    anno->setAttribute(QzFontStyleAttribute, nullptr);
    for (const EditedAttribute& edited : editedAttributes()) {
        const Attribute& attribute = *edited.attribute;
        std::vector<Ref<NSObject>> fields;
        for (const std::string& name : edited.fields) fields.push_back(fields_.at(name));
        Ref<NSObject> value = isOn(edited.flag) ? valueFromFields(attribute, fields, screensize_) : nullptr;
        // Margins that were not edited are unchanged, down to the kind of their numbers.
        const Ref<NSObject> former = originalAnno_->attribute(*attribute.name);
        if (value && former && attribute.kind == Attribute::Kind::margins &&
            marginsFrom(former).value_or(Margins()) == marginsFrom(value))
            value = former;
        anno->setAttribute(attribute.name, value);
    }
    return anno;
}

// Editing

Ref<QzAnnoPalette> QzAnnoEditor::palette() const {
    const Ref<QzAnnoPaletteAsTable> host = outlets_.paletteHost.lock();
    return host ? host->palette() : nullptr;
}

void QzAnnoEditor::setAnno(const Ref<const QzAnno>& anno) {
    if (editing_) return;
    okay(shared_from_this());
    if (!anno) return;
    const Ref<NSColor> background = NSUserDefaults::standardUserDefaults().colorForKey("App Background Color");
    if (background && outlets_.annowindow) outlets_.annowindow->setBackgroundColor(background);
    change("isEditing", editing_, true);
    originalAnno_ = anno->copy();
    origannoname_ = anno->annokey()->name();
    copyFromAnno();
    showName();
    NSColorPanel::sharedColorPanel().setShowsAlpha(true);
    if (outlets_.annowindow) outlets_.annowindow->makeKeyAndOrderFront(shared_from_this());
    const bool isNew = anno->name()->utf8() == "NEW";
    showPage(isNew ? kPageOfNewAnno : kPageOfOtherAnno);
    if (!isNew || !outlets_.annoname) return;
    outlets_.annoname->setFocus();
    outlets_.annoname->selectAll();
}

void QzAnnoEditor::showName() {
    if (!outlets_.annowindow) return;
    std::string title = "Annotation";
    if (originalAnno_) title = nameShown(*originalAnno_->annokey()) + " – " + title;
    outlets_.annowindow->setTitle(NSString::stringWithUTF8String(title));
}

void QzAnnoEditor::showPage(int32_t page) {
    if (!outlets_.tabview) return;
    outlets_.tabview->selectTabViewItemAtIndex(page);
    // A table that has not been drawn yet has not requested anything.
    const Ref<NSTableView> asked = tv_.lock();
    if (const Ref<NSTableView>& table = asked ? asked : outlets_.pages) table->selectRow(page, false);
}

bool QzAnnoEditor::showPage(const Ref<NSString>& label) {
    const std::vector<Ref<NSString>> labels = pageLabels();
    const auto found = std::ranges::find_if(labels, [&](const auto& other) { return areEqual(other, label); });
    if (found == labels.end()) return false;
    showPage(static_cast<int32_t>(found - labels.begin()));
    return true;
}

std::vector<Ref<NSString>> QzAnnoEditor::pageLabels() const {
    std::vector<Ref<NSString>> labels;
    for (int32_t page = 0; outlets_.tabview && page < outlets_.tabview->numberOfTabViewItems(); ++page)
        labels.push_back(outlets_.tabview->labelOfTabViewItemAtIndex(page));
    return labels;
}

void QzAnnoEditor::applyAnno(const Ref<QzAnno>& anno) {
    const Ref<QzAnnoPalette> palette = this->palette();
    if (!anno || !palette) return;
    Ref<NSString> name;
    if (isOn("en_annoname")) {
        name = anno == originalAnno_ ? origannoname_ : std::static_pointer_cast<NSString>(fields_["annoname"]);
    }
    replaceAnnoNamed(*palette, anno->copy(), name);
    showName();
}

void QzAnnoEditor::apply(const Ref<NSObject>& /*sender*/) {
    applyAnno(copyToAnno());
    hasChanges_ = false;
}

void QzAnnoEditor::revert(const Ref<NSObject>& /*sender*/) {
    copyFromAnno();
}

void QzAnnoEditor::okay(const Ref<NSObject>& sender) {
    apply(sender);
    close();
}

void QzAnnoEditor::cancel(const Ref<NSObject>& /*sender*/) {
    // The flag may have been cleared since, but the name is restored anyway.
    if (originalAnno_ && !originalAnno_->annokey()->isDefault())
        fields_["en_annoname"] = NSNumber::numberWithBool(true);
    applyAnno(originalAnno_);
    close();
}

void QzAnnoEditor::close() {
    if (fontpanel_) fontpanel_->orderOut(shared_from_this());
    // Its colours go to a field of this panel.
    if (editing_) NSColorPanel::sharedColorPanel().orderOut();
    if (outlets_.annowindow) outlets_.annowindow->orderOut(shared_from_this());
    change("isEditing", editing_, false);
    originalAnno_.reset();
    origannoname_.reset();
    showName();
}

bool QzAnnoEditor::cancelOperation(NSWindow& /*window*/) {
    cancel({});
    return true;
}

void QzAnnoEditor::windowWillClose(const NSNotification& /*notification*/) {
    close();
}

Ref<NSUndoManager> QzAnnoEditor::windowWillReturnUndoManager(NSWindow& /*window*/) {
    const Ref<QzAnnoPalette> palette = this->palette();
    return palette ? palette->undoManager() : nullptr;
}

// Fonts

void QzAnnoEditor::editFont(const Ref<NSObject>& sender) {
    prepareFontPanel();
    if (fontpanel_) fontpanel_->makeKeyAndOrderFront(sender);
}

void QzAnnoEditor::changeFont(const Ref<NSObject>& sender) {
    const auto fonts = std::dynamic_pointer_cast<NSFontManager>(sender);
    const Ref<NSFont> font = fonts ? fonts->convertFont(fonts->selectedFont()) : nullptr;
    if (!font) {
        NSLog("No font!!1\n");
        return;
    }
    setValue(font->fontName(), "font");
}

uint32_t QzAnnoEditor::validModesForFontPanel(NSWindow& /*fontPanel*/) {
    return NSFontPanelFaceModeMask | NSFontPanelCollectionModeMask;
}

// Pages

int32_t QzAnnoEditor::numberOfRowsInTableView(NSTableView& /*tableView*/) {
    return outlets_.tabview ? outlets_.tabview->numberOfTabViewItems() : 0;
}

Ref<NSObject> QzAnnoEditor::objectValueForTableColumn(NSTableView& tableView, NSTableColumn& /*column*/, int32_t row) {
    if (tv_.expired()) tv_ = refTo(tableView);
    return outlets_.tabview ? outlets_.tabview->labelOfTabViewItemAtIndex(row) : nullptr;
}

void QzAnnoEditor::tableViewSelectionDidChange(const NSNotification& notification) {
    const auto tableView = std::dynamic_pointer_cast<NSTableView>(notification.object);
    if (tableView && outlets_.tabview) outlets_.tabview->selectTabViewItemAtIndex(tableView->selectedRow());
}

}  // namespace qz
